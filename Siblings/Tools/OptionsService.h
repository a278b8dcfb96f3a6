// One store of options, as other libraries hold it. See OptionStore.h for what stores and keys are.
//
// The trailing arguments of the operations say nothing to this store.
// Ownership: the caller deletes it. It stays usable until then, also after the tools object was detached.
// Errors:    the default of Get; false of Set and Delete. Nothing is thrown.
// Threads:   any.

#pragma once

#include "OptionsHelper.h"
#include "OptionStore.h"
#include <memory>
#include <string>

class OptionsService final : public IOptionsHelper
{
public:
    OptionsService(std::shared_ptr<OptionStore> pStore, const wchar_t* pName); // a null name is the empty one

    LyXString Get(const wchar_t* pKey, const wchar_t* pDefault, int nA, const wchar_t* pB, int nC) override;
    // The value as a decimal number that fits; blanks around it are allowed. The default for anything else.
    int Get(const wchar_t* pKey, int nDefault, int nA, int nB) override;
    bool Set(const wchar_t* pKey, const wchar_t* pValue, int nA, const wchar_t* pB, int nC) override;
    bool Delete(const wchar_t* pKey) override; // true if it was there

private:
    std::shared_ptr<OptionStore> m_pStore;
    std::wstring m_strName;
};
