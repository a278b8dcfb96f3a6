#include "LyStringFormat.h"
#include "Markup.h"
#include "PropertyMap.h"
#include "RawTable.h"
#include <climits>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{
std::wstring Text(const LyString& str)
{
    return {static_cast<const wchar_t*>(str), static_cast<size_t>(str.GetLength())};
}

std::wstring Save(const LyPropertyMap& map)
{
    LyString str;
    map.SaveProperties(str, true);
    return Text(str);
}

LyPropertyMap MakeMap(int nEntries)
{
    LyPropertyMap map;
    for (int i = 0; i < nEntries; ++i)
        map.SetPropertyInt(LyFormatString(L"Key %d", i), i);
    return map;
}

int CountOf(const LyPropertyMap& map) { return map.m_pProperties != nullptr ? map.m_pProperties->GetCount() : 0; }
} // namespace

// ---- Values

TEST(PropertyMap, HoldsTextUnderKeysWithoutCase)
{
    LyPropertyMap map;
    EXPECT_FALSE(map.GetHasProperty(L"A"));
    map.SetProperty(L"A", L"1", false);
    EXPECT_TRUE(map.GetHasProperty(L"a"));
    EXPECT_EQ(Text(map.GetProperty(L"a", nullptr)), L"1");
    map.SetProperty(L"a", L"2", false);
    EXPECT_EQ(CountOf(map), 1);
    EXPECT_EQ(Save(map), L"(1:1)(1:A)(1:2)") << "the key stays as it was first inserted";
}

TEST(PropertyMap, MissingKeyGivesTheDefault)
{
    LyPropertyMap map;
    EXPECT_EQ(Text(map.GetProperty(L"x", nullptr)), L"");
    EXPECT_EQ(Text(map.GetProperty(L"x", L"default")), L"default");
    map.SetProperty(L"y", L"", false);
    EXPECT_EQ(Text(map.GetProperty(L"x", L"default")), L"default");
    EXPECT_EQ(Text(map.GetProperty(L"y", L"default")), L"") << "an empty value is a value";
}

TEST(PropertyMap, NullKeyIsTheEmptyOne)
{
    LyPropertyMap map;
    map.SetProperty(nullptr, L"1", false);
    EXPECT_TRUE(map.GetHasProperty(L""));
    EXPECT_TRUE(map.RemoveProperty(nullptr));
}

TEST(PropertyMap, MapExistsOnlyWhileItHoldsSomething)
{
    LyPropertyMap map;
    EXPECT_EQ(map.m_pProperties, nullptr);
    map.SetProperty(L"A", L"", true);
    EXPECT_EQ(map.m_pProperties, nullptr) << "nothing was inserted";
    map.SetProperty(L"A", L"", false);
    EXPECT_NE(map.m_pProperties, nullptr);
    map.SetProperty(L"B", L"1", true);
    EXPECT_FALSE(map.RemoveProperty(L"C"));
    EXPECT_TRUE(map.RemoveProperty(L"a"));
    EXPECT_NE(map.m_pProperties, nullptr);
    map.SetProperty(L"b", L"", true);
    EXPECT_EQ(map.m_pProperties, nullptr) << "an empty value removed the last entry";
    EXPECT_FALSE(map.RemoveProperty(L"b"));
    EXPECT_EQ(Save(map), L"(1:0)");
    map.SetProperty(L"A", L"1", false);
    map.DeleteProperties();
    EXPECT_EQ(map.m_pProperties, nullptr);
    map.DeleteProperties();
}

// ---- Typed access

TEST(PropertyMapInt, GoesThroughDecimalText)
{
    LyPropertyMap map;
    for (int nValue : {0, 7, -7, INT_MAX, -INT_MAX})
    {
        map.SetPropertyInt(L"x", nValue);
        EXPECT_EQ(Text(map.GetProperty(L"x", nullptr)), std::to_wstring(nValue));
        EXPECT_EQ(map.GetPropertyInt(L"x", 1), nValue);
    }
    map.SetProperty(L"x", L" 12 monkeys", false);
    EXPECT_EQ(map.GetPropertyInt(L"x", 1), 12);
    map.SetProperty(L"x", L"monkeys", false);
    EXPECT_EQ(map.GetPropertyInt(L"x", 1), 0) << "a value that is no number is not a missing key";
}

TEST(PropertyMapInt, MissingKeyGivesTheDefault)
{
    EXPECT_EQ(LyPropertyMap().GetPropertyInt(L"x", 7), 7);
    EXPECT_EQ(LyPropertyMap().GetPropertyInt(L"x", -7), -7);
    EXPECT_EQ(LyPropertyMap().GetPropertyInt(L"x", INT_MIN), -INT_MAX) << "the default goes through its text";
}

TEST(PropertyMapDouble, GoesThroughDecimalText)
{
    LyPropertyMap map;
    struct
    {
        double fValue;
        const wchar_t* pText;
    } const aryCases[] = {{0, L"0"}, {2, L"2"}, {2.5, L"2.5"}, {-0.125, L"-0.125"}, {1e6, L"1000000"}};
    for (const auto& row : aryCases)
    {
        map.SetPropertyDouble(L"x", row.fValue);
        EXPECT_EQ(Text(map.GetProperty(L"x", nullptr)), row.pText);
        EXPECT_EQ(map.GetPropertyDouble(L"x", 1), row.fValue);
        EXPECT_EQ(map.GetPropertyDouble(L"missing", row.fValue), row.fValue);
    }
    map.SetProperty(L"x", L"2,5", false);
    EXPECT_EQ(map.GetPropertyDouble(L"x", 1), 2.5) << "either separator";
    map.SetProperty(L"x", L"2.5e2", false);
    EXPECT_EQ(map.GetPropertyDouble(L"x", 1), 250) << "an exponent, too";
}

TEST(PropertyMapPointer, GoesThroughHexadecimalText)
{
    LyPropertyMap map;
    int nTarget = 0;
    map.SetPropertyPointer(L"x", &nTarget);
    EXPECT_EQ(map.GetPropertyPointer(L"x", nullptr), &nTarget);
    EXPECT_EQ(map.GetPropertyPointer(L"missing", &nTarget), &nTarget);
    map.SetPropertyPointer(L"x", reinterpret_cast<void*>(0xAB12));
    EXPECT_EQ(Text(map.GetProperty(L"x", nullptr)), L"0000AB12");
    map.SetPropertyPointer(L"x", nullptr);
    EXPECT_EQ(map.GetPropertyPointer(L"x", &nTarget), nullptr);
}

// ---- Whole maps

TEST(PropertyMapCopy, TakesEverythingAndDropsItsOwn)
{
    LyPropertyMap map = MakeMap(100);
    LyPropertyMap copy;
    copy.SetProperty(L"old", L"1", false);
    EXPECT_TRUE(copy.CopyProperties(map));
    EXPECT_EQ(CountOf(copy), 100);
    EXPECT_FALSE(copy.GetHasProperty(L"old"));
    EXPECT_TRUE(copy.CompareProperties(map));
    EXPECT_TRUE(copy.CopyProperties(copy));
    EXPECT_EQ(CountOf(copy), 100);
    EXPECT_TRUE(copy.CopyProperties(LyPropertyMap()));
    EXPECT_EQ(copy.m_pProperties, nullptr);
    EXPECT_EQ(CountOf(map), 100);
    copy = map;
    map.SetPropertyInt(L"Key 0", 99);
    EXPECT_EQ(copy.GetPropertyInt(L"Key 0", 1), 0) << "the copy is one of its own";
}

TEST(PropertyMapCompare, MindsCountAndValues)
{
    LyPropertyMap a;
    LyPropertyMap b;
    EXPECT_TRUE(a.CompareProperties(b));
    EXPECT_TRUE(a.CompareProperties(a));
    a.SetProperty(L"Key", L"Value", false);
    EXPECT_FALSE(a.CompareProperties(b));
    EXPECT_FALSE(b.CompareProperties(a));
    b.SetProperty(L"KEY", L"Value", false);
    EXPECT_TRUE(a.CompareProperties(b)) << "keys without case";
    b.SetProperty(L"KEY", L"VALUE", false);
    EXPECT_FALSE(a.CompareProperties(b)) << "values with case";
}

TEST(PropertyMapCompare, MissingKeyEqualsAnEmptyValue)
{
    LyPropertyMap a;
    LyPropertyMap b;
    a.SetProperty(L"A", L"", false);
    b.SetProperty(L"B", L"1", false);
    EXPECT_TRUE(a.CompareProperties(b));
    EXPECT_FALSE(b.CompareProperties(a));
}

TEST(PropertyMapDump, ListsEntriesInTheirOrder)
{
    LyPropertyMap map;
    EXPECT_EQ(Text(map.DumpProperties(L"<", L">")), L"");
    map.SetProperty(L"Speed", L"16", false);
    EXPECT_EQ(Text(map.DumpProperties(L"* ", L"\n")), L"* Speed: 16\n");
    map.SetProperty(L"Mode", L"on", false);
    const std::wstring strDump = Text(map.DumpProperties(L"", L";"));
    EXPECT_TRUE(strDump == L"Speed: 16;Mode: on;" || strDump == L"Mode: on;Speed: 16;");
}

// ---- The text form

TEST(PropertyMapText, HoldsCountKeysAndValues)
{
    LyPropertyMap map;
    map.SetProperty(L"Speed", L"16", false);
    map.SetProperty(L"Mode", L"on", false);
    const std::wstring strSaved = Save(map);
    EXPECT_TRUE(strSaved == L"(1:2)(5:Speed)(2:16)(4:Mode)(2:on)" || strSaved == L"(1:2)(4:Mode)(2:on)(5:Speed)(2:16)");
    EXPECT_EQ(strSaved.substr(5, 5) == L"(5:Sp", Text(map.DumpProperties(L"", L"")).substr(0, 5) == L"Speed")
        << "every form has the same order";
}

TEST(PropertyMapText, IsAppended)
{
    LyPropertyMap map;
    map.SetProperty(L"a", L"b", false);
    LyString str(L"x");
    map.SaveProperties(str, false);
    EXPECT_EQ(Text(str), L"x(1:0)") << "without values";
    map.SaveProperties(str, true);
    EXPECT_EQ(Text(str), L"x(1:0)(1:1)(1:a)(1:b)");
    LyPropertyMap().SaveProperties(str, true);
    EXPECT_EQ(Text(str), L"x(1:0)(1:1)(1:a)(1:b)(1:0)");
}

TEST(PropertyMapText, StandsInsideALongerTextAndMovesThePosition)
{
    const LyString str(L"(2:ab)(1:1)(3:Key)(4:(v:))(3:end)");
    LyPropertyMap map;
    map.SetProperty(L"old", L"1", false);
    int nPosition = 6;
    map.LoadProperties(str, nPosition);
    EXPECT_EQ(nPosition, 26);
    EXPECT_EQ(Text(map.GetProperty(L"Key", nullptr)), L"(v:)");
    EXPECT_EQ(CountOf(map), 1);
    LyString strEnd;
    EXPECT_TRUE(str.LoadStringFast(nPosition, strEnd, nullptr));
    EXPECT_EQ(Text(strEnd), L"end");
}

TEST(PropertyMapText, RestoresKeysAndValuesExactly)
{
    LyPropertyMap map = MakeMap(50);
    map.SetProperty(L"(odd:)", L"a)(3:b\r\n\t\x01", false);
    map.SetProperty(L"empty", L"", false);
    map.SetProperty(L"", L"no key", false);
    LyString str;
    map.SaveProperties(str, true);
    LyPropertyMap again;
    again.LoadProperties(str);
    EXPECT_EQ(CountOf(again), CountOf(map));
    EXPECT_TRUE(again.CompareProperties(map));
    EXPECT_TRUE(again.GetHasProperty(L"empty"));
}

struct DAMAGE_CASE
{
    const wchar_t* pText;
    const wchar_t* pSaved;
};

TEST(PropertyMapText, DamagedFieldsReadAsEmpty)
{
    const DAMAGE_CASE aryCases[] = {
        {L"", L"(1:0)"},
        {L"nothing", L"(1:0)"},
        {L"(1:0)(1:a)(1:b)", L"(1:0)"},
        {L"(2:-1)(1:a)(1:b)", L"(1:0)"},
        {L"(1:1)(1:a)", L"(1:1)(1:a)(0:)"},
        {L"(1:1)", L"(1:1)(0:)(0:)"},
        {L"(1:9)", L"(1:1)(0:)(0:)"},
        {L"(1:2)(1:a)(1:b)(x:c)(1:d)", L"(1:2)"}, // the broken field is the key ""
        {L"(10:2147483647)", L"(1:1)(0:)(0:)"},   // a count from outside takes no time
        {L"(10:2147483647)(1:a)(1:b)x", L"(1:2)"},
    };
    for (const DAMAGE_CASE& row : aryCases)
    {
        LyPropertyMap map;
        map.SetProperty(L"old", L"1", false);
        map.LoadProperties(row.pText);
        EXPECT_EQ(Save(map).substr(0, std::wstring(row.pSaved).size()), row.pSaved) << row.pText;
        EXPECT_FALSE(map.GetHasProperty(L"old"));
    }
}

TEST(PropertyMapText, ReadsOnBehindADamagedField)
{
    LyPropertyMap map;
    map.LoadProperties(L"(1:2)(:(1:v)(1:k)(1:w)"); // a field without a count is stepped over
    EXPECT_EQ(Text(map.GetProperty(L"", nullptr)), L"v");
    EXPECT_EQ(Text(map.GetProperty(L"k", nullptr)), L"w");
}

TEST(PropertyMapText, PositionOutsideHoldsNothing)
{
    for (int nStart : {-1, 5, 100, INT_MAX, INT_MIN})
    {
        LyPropertyMap map;
        int nPosition = nStart;
        map.LoadProperties(L"(1:1)", nPosition);
        EXPECT_EQ(map.m_pProperties, nullptr);
    }
}

// ---- The virtual table, as another library uses it

namespace
{
// Writes down which operation was called; what they do is not this test's matter.
class TracingMap final : public LyPropertyMap
{
public:
    mutable std::vector<int> m_arySlots;

    bool GetHasProperty(const wchar_t*) const override { return Trace(1); }
    LyString GetProperty(const wchar_t*, const wchar_t*) const override { return Name(2); }
    int GetPropertyInt(const wchar_t*, int) const override { return Trace(3); }
    double GetPropertyDouble(const wchar_t*, double) const override { return Trace(4); }
    void* GetPropertyPointer(const wchar_t*, void*) const override { return Trace(5) ? nullptr : nullptr; }
    void SetProperty(const wchar_t*, const LyString&, bool) override { Trace(6); }
    void SetPropertyInt(const wchar_t*, int) override { Trace(7); }
    void SetPropertyPointer(const wchar_t*, void*) override { Trace(8); }
    void SetPropertyDouble(const wchar_t*, double) override { Trace(9); }
    void DeleteProperties() override { Trace(10); }
    bool RemoveProperty(const wchar_t*) override { return Trace(11); }
    bool CopyProperties(const LyPropertyMap&) override { return Trace(12); }
    bool CompareProperties(const LyPropertyMap&) const override { return Trace(13); }
    void SaveProperties(LyString&, bool) const override { Trace(14); }
    void LoadProperties(const LyString&) override { Trace(15); }
    void LoadProperties(const LyString&, int&) override { Trace(16); }
    LyString SavePropertiesXML(const LyString&, bool, double) const override { return Name(17); }
    bool LoadPropertiesXML(const LyString&, const LyString&, double) override { return Trace(18); }
    void SavePropertiesExistingXML(CMarkup&) const override { Trace(19); }
    void LoadPropertiesExistingXML(CMarkup&) override { Trace(20); }
    LyString DumpProperties(const LyString&, const LyString&) const override { return Name(21); }

private:
    bool Trace(int nSlot) const
    {
        m_arySlots.push_back(nSlot);
        return true;
    }
    LyString Name(int nSlot) const
    {
        Trace(nSlot);
        return LyString();
    }
};

// A text result comes back through a hidden first argument; the object is the second one.
void CallTextSlot(const void* pObject, int nIndex)
{
    using OPERATION = void (*)(void*, const void*, const void*, const void*);
    const OPERATION* pTable = *static_cast<const OPERATION* const*>(pObject);
    LyString strResult;
    alignas(LyString) unsigned char aryResult[sizeof(LyString)];
    pTable[nIndex](aryResult, pObject, &strResult, &strResult);
    reinterpret_cast<LyString*>(aryResult)->~LyString();
}
} // namespace

TEST(PropertyMapTable, HasItsOperationsInTheirPlaces)
{
    TracingMap map;
    std::vector<int> aryExpected;
    for (int nSlot = 1; nSlot <= 21; ++nSlot)
    {
        aryExpected.push_back(nSlot);
        if (nSlot == 2 || nSlot == 17 || nSlot == 21)
            CallTextSlot(&map, nSlot - 1);
        else if (nSlot == 4)
            (void)CallSlot<double>(&map, nSlot - 1, L"", 0.0);
        else
            CallSlot<void>(&map, nSlot - 1, static_cast<const void*>(L""), static_cast<const void*>(nullptr));
    }
    EXPECT_EQ(map.m_arySlots, aryExpected);
}

TEST(PropertyMapTable, RealOperationsAnswerThere)
{
    LyPropertyMap map;
    const LyString strValue(L"16");
    CallSlot<void>(&map, 5, L"Speed", &strValue, false);
    EXPECT_TRUE(CallSlot<bool>(&map, 0, L"speed"));
    EXPECT_EQ(CallSlot<int>(&map, 2, L"SPEED", 1), 16);
    EXPECT_TRUE(CallSlot<bool>(&map, 12, &map));
    CallSlot<void>(&map, 9);
    EXPECT_EQ(map.m_pProperties, nullptr);
}

TEST(PropertyMapTable, TypedAccessGoesThroughTheTextOperations)
{
    TracingMap map;
    (void)map.LyPropertyMap::GetPropertyInt(L"x", 1);
    map.LyPropertyMap::SetPropertyInt(L"x", 1);
    EXPECT_EQ(map.m_arySlots, (std::vector<int>{2, 6}));
}
