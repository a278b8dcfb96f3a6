// What a file name asks of the sibling reader library.

#include "ILyReader.h"
#include "LyFilename.h"
#include "LyPtr.h"
#include "LySharedToolsHelper.h"

// Only the head is asked for: the length comes with it, and nothing else is transferred.
long long LyFilename::GetURLSize() const
{
    const LyPtr<ILyReader, ILyReader> reader(CreateGenericReader(m_strName), true, false);
    if (reader == nullptr)
        return -1;
    reader->SetProperty(L"HTTPREQUEST_TYPE", L"HEAD");
    return reader->Open() ? reader->GetLength() : -1;
}
