// The text between two markers.

#include "StringTestSupport.h"
#include <climits>
#include <gtest/gtest.h>

namespace
{
constexpr bool CASE = true;
constexpr bool NO_CASE = false;
constexpr bool MARKERS = true;
constexpr bool INSIDE = false;
constexpr bool CLOSES = true;
constexpr bool OPEN = false;
constexpr ERecursiveSpanModes FLAT = RECURSIVE_SPAN_NONE;
constexpr ERecursiveSpanModes NESTED = RECURSIVE_SPAN_NESTED;
} // namespace

struct SPAN_CASE
{
    const char* pName;
    const wchar_t* pText;
    const wchar_t* pBegin;
    const wchar_t* pEnd;
    bool bCase;
    int nFrom;
    bool bMarkers;
    ERecursiveSpanModes eRecursion;
    bool bEndCloses;
    int nStart; // -1: no span
    int nEnd;
};

const SPAN_CASE s_arySpanCases[] = {
    {"Inside", L"a(bc)d", L"(", L")", CASE, 0, INSIDE, FLAT, OPEN, 2, 4},
    {"WithMarkers", L"a(bc)d", L"(", L")", CASE, 0, MARKERS, FLAT, OPEN, 1, 5},
    {"LongMarkers", L"x<b>y</b>", L"<b>", L"</b>", CASE, 0, INSIDE, FLAT, OPEN, 4, 5},
    {"LongMarkersIncluded", L"x<b>y</b>", L"<b>", L"</b>", CASE, 0, MARKERS, FLAT, OPEN, 1, 9},
    {"Nothing between", L"()", L"(", L")", CASE, 0, INSIDE, FLAT, OPEN, 1, 1},
    {"SearchFrom", L"(a)(b)", L"(", L")", CASE, 1, INSIDE, FLAT, OPEN, 4, 5},
    {"SearchFromIsClamped", L"(a)", L"(", L")", CASE, INT_MIN, INSIDE, FLAT, OPEN, 1, 2},
    {"SearchFromBehindTheEnd", L"(a)", L"(", L")", CASE, INT_MAX, INSIDE, FLAT, CLOSES, -1, -1},
    {"CaseMatters", L"[B]x[/B]", L"[b]", L"[/b]", CASE, 0, INSIDE, FLAT, OPEN, -1, -1},
    {"CaseIgnored", L"[B]x[/b]", L"[b]", L"[/B]", NO_CASE, 0, INSIDE, FLAT, OPEN, 3, 4},
    {"NoOpening", L"a)b", L"(", L")", CASE, 0, INSIDE, FLAT, CLOSES, -1, -1},
    {"NoClosing", L"a(b", L"(", L")", CASE, 0, INSIDE, FLAT, OPEN, -1, -1},
    {"ClosingBeforeOpening", L")(", L"(", L")", CASE, 0, INSIDE, FLAT, OPEN, -1, -1},
    {"EndOfStringCloses", L"a(b", L"(", L")", CASE, 0, INSIDE, FLAT, CLOSES, 2, 3},
    {"EndOfStringClosesWithMarkers", L"a(b", L"(", L")", CASE, 0, MARKERS, FLAT, CLOSES, 1, 3},
    {"EndOfStringClosesAtOnce", L"a(", L"(", L")", CASE, 0, INSIDE, FLAT, CLOSES, 2, 2},
    {"FirstClosingEndsTheFlatSpan", L"(a(b)c)", L"(", L")", CASE, 0, INSIDE, FLAT, OPEN, 1, 4},
    {"NestedSpanEndsAtItsOwnMarker", L"(a(b)c)d)", L"(", L")", CASE, 0, INSIDE, NESTED, OPEN, 1, 6},
    {"NestedWithMarkers", L"(a(b)c)d)", L"(", L")", CASE, 0, MARKERS, NESTED, OPEN, 0, 7},
    {"NestedTwice", L"((()))", L"(", L")", CASE, 0, INSIDE, NESTED, OPEN, 1, 5},
    {"NestedIgnoringCase", L"<b>1<B>2</b>3</B>", L"<B>", L"</B>", NO_CASE, 0, INSIDE, NESTED, OPEN, 3, 13},
    {"NestedNotClosed", L"(a(b)c", L"(", L")", CASE, 0, INSIDE, NESTED, OPEN, -1, -1},
    {"NestedClosedByTheEnd", L"(a(b)c", L"(", L")", CASE, 0, INSIDE, NESTED, CLOSES, 1, 6},
    {"SameMarkerFlat", L"\"a\"b", L"\"", L"\"", CASE, 0, INSIDE, FLAT, OPEN, 1, 2},
    {"SameMarkerNestedOnlyOpens", L"\"a\"b", L"\"", L"\"", CASE, 0, INSIDE, NESTED, OPEN, -1, -1},
    {"EmptyOpening", L"ab)c", L"", L")", CASE, 1, INSIDE, FLAT, OPEN, 1, 2},
    {"NullOpening", L"ab)c", nullptr, L")", CASE, 0, INSIDE, FLAT, OPEN, 0, 2},
    {"EmptyClosing", L"a(bc", L"(", L"", CASE, 0, INSIDE, FLAT, OPEN, 2, 2},
    {"NullClosing", L"a(bc", L"(", nullptr, CASE, 0, MARKERS, FLAT, OPEN, 1, 2},
    {"EmptyOpeningNested", L"ab)c", L"", L")", CASE, 0, INSIDE, NESTED, OPEN, 0, 2},
    {"EmptyClosingNested", L"a((c", L"(", L"", CASE, 0, INSIDE, NESTED, OPEN, 2, 3},
    {"BothEmpty", L"ab", L"", L"", CASE, 0, INSIDE, NESTED, OPEN, 0, 0},
    {"EmptyText", L"", L"(", L")", CASE, 0, INSIDE, FLAT, CLOSES, -1, -1},
};

TEST(LyStringSpan, OffsetsByTheRules)
{
    for (const SPAN_CASE& row : s_arySpanCases)
    {
        int nStart = 77;
        int nEnd = 77;
        bool bFound = LyString(row.pText).GetSpanOffsets(nStart, nEnd, row.pBegin, row.pEnd, row.bCase, row.nFrom,
                                                         row.bMarkers, row.eRecursion, row.bEndCloses);
        EXPECT_EQ(bFound, row.nStart >= 0) << row.pName;
        EXPECT_EQ(nStart, row.nStart) << row.pName;
        EXPECT_EQ(nEnd, row.nEnd) << row.pName;
    }
}

TEST(LyStringSpan, TextLiesBetweenTheOffsets)
{
    for (const SPAN_CASE& row : s_arySpanCases)
    {
        LyString strSpan = LyString(row.pText).GetSpan(row.pBegin, row.pEnd, row.bCase, row.nFrom, row.bMarkers,
                                                       row.eRecursion, row.bEndCloses);
        std::wstring strExpected = row.nStart < 0
                                       ? std::wstring()
                                       : std::wstring(row.pText).substr(static_cast<size_t>(row.nStart),
                                                                        static_cast<size_t>(row.nEnd - row.nStart));
        EXPECT_EQ(Contents(strSpan), strExpected) << row.pName;
    }
}
