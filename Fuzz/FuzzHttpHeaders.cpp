// The header lines of a hostile server: line by line as a transport would hand them over, then every question.
//
// Input: the lines, each with its line feed.

#include "FuzzCheck.h"
#include "HttpHeaders.h"
#include "ReaderNames.h"
#include "UrlRequest.h"
#include <cstddef>
#include <cstdint>

namespace
{
void CheckAnswers(const HttpHeaders& headers)
{
    const std::string& strText = headers.GetText();
    Check(strText.empty() || strText.back() == '\n');
    Check(strText.find('\r') == std::string::npos && strText.find('\0') == std::string::npos);
    Check(strText.size() <= HttpHeaders::MAX_BYTES + 1);
    Check(headers.GetStatus() >= 0 && headers.GetStatus() <= 999);
    Check(!headers.GetIsFinal() || headers.GetIsComplete());
    for (const char* pName : {"Location", "ETag", "Last-Modified", "Accept-Ranges", "Content-Encoding", ""})
        Check(headers.HasValue(pName) || headers.GetValue(pName).empty());
    CONTENT_RANGE range;
    if (headers.GetContentRange(range))
        Check(range.nFirst >= 0 && range.nFirst <= range.nLast && (range.nTotal < 0 || range.nLast < range.nTotal));
    (void)headers.GetAcceptsRanges();
    Check(headers.GetValidator().find('\n') == std::string::npos);
    Check(headers.GetIsSameEntity(headers));
    Check(HttpHeaders::Widen(strText).size() <= strText.size());
    (void)headers.GetContentEncoding();
}

// The other direction: what a caller wants to be sent never holds a line end.
void CheckRequest(const std::wstring& strText)
{
    UrlRequest request;
    request.SetParameters(L"INFO_HEADERS|" + strText);
    request.SetParameters(strText);
    for (const std::string& strLine : request.GetHeaderLines())
        Check(!strLine.empty() && strLine.find_first_of("\r\n") == std::string::npos);
    Check(!request.GetRefusal().empty() || request.GetMethod().find_first_of(" \r\n") == std::string::npos);
    const std::string strURL = GetRequestURL(strText);
    (void)GetHostOfURL(strURL);
    (void)GetReaderKind(strText);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::string_view strInput(reinterpret_cast<const char*>(pData), nBytes);
    CheckRequest(HttpHeaders::Widen(strInput));
    HttpHeaders headers;
    while (!strInput.empty())
    {
        const size_t nLineEnd = strInput.find('\n');
        const size_t nLine = nLineEnd == std::string_view::npos ? strInput.size() : nLineEnd + 1;
        if (!headers.AddLine(strInput.substr(0, nLine)))
            break;
        strInput.remove_prefix(nLine);
    }
    CheckAnswers(headers);
    headers.Clear();
    Check(headers.GetText().empty());
    return 0;
}
