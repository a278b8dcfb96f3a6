#include "OptionsService.h"
#include <climits>
#include <utility>

namespace
{
constexpr int DECIMAL = 10;

bool IsBlank(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

bool IsDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Digits with a sign in front or without, blanks around them, and nothing else.
std::optional<int> ParseNumber(const std::wstring& strText)
{
    const wchar_t* p = strText.c_str();
    while (IsBlank(*p))
        p++;
    const bool bNegative = *p == L'-';
    if (bNegative || *p == L'+')
        p++;
    if (!IsDigit(*p))
        return std::nullopt;
    long long nNumber = 0;
    for (; IsDigit(*p); p++)
    {
        nNumber = nNumber * DECIMAL + (bNegative ? L'0' - *p : *p - L'0');
        if (nNumber < INT_MIN || nNumber > INT_MAX)
            return std::nullopt;
    }
    while (IsBlank(*p))
        p++;
    return *p == 0 ? std::optional(static_cast<int>(nNumber)) : std::nullopt;
}
} // namespace

OptionsService::OptionsService(std::shared_ptr<OptionStore> pStore, const wchar_t* pName)
    : m_pStore(std::move(pStore)), m_strName(pName != nullptr ? pName : L"")
{
}

LyXString OptionsService::Get(const wchar_t* pKey, const wchar_t* pDefault, int, const wchar_t*, int)
{
    std::optional<std::wstring> value;
    try
    {
        value = m_pStore->Get(m_strName.c_str(), pKey);
    }
    catch (...)
    {
        value.reset(); // no memory: the default is all that there is
    }
    return {LyCom::SysAllocString(value ? value->c_str() : pDefault)};
}

int OptionsService::Get(const wchar_t* pKey, int nDefault, int, int)
{
    try
    {
        const std::optional<std::wstring> value = m_pStore->Get(m_strName.c_str(), pKey);
        return value ? ParseNumber(*value).value_or(nDefault) : nDefault;
    }
    catch (...)
    {
        return nDefault;
    }
}

bool OptionsService::Set(const wchar_t* pKey, const wchar_t* pValue, int, const wchar_t*, int)
{
    try
    {
        return m_pStore->Set(m_strName.c_str(), pKey, pValue);
    }
    catch (...)
    {
        return false;
    }
}

bool OptionsService::Delete(const wchar_t* pKey)
{
    try
    {
        return m_pStore->Delete(m_strName.c_str(), pKey);
    }
    catch (...)
    {
        return false;
    }
}
