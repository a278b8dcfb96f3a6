// Calls through the raw virtual table, as another library does that knows only the order of the operations.

#pragma once

template <class RESULT, class... ARGUMENTS>
RESULT CallSlot(const void* pObject, int nIndex, ARGUMENTS... arguments)
{
    using OPERATION = RESULT (*)(const void*, ARGUMENTS...);
    const OPERATION* pTable = *static_cast<const OPERATION* const*>(pObject);
    return pTable[nIndex](pObject, arguments...);
}
