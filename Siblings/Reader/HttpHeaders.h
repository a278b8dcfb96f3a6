// The header lines of a server's answers, as a transport hands them over one by one: the last answer's status and
// fields, as text and one at a time.
//
// Formats: RFC 9112 (HTTP/1.1), sections 4 and 5; RFC 9110 for Accept-Ranges, Content-Range, ETag. The status line
//          "ICY 200 OK" of old radio stations counts as one.
// Input:   hostile. All answers to one request together may bring MAX_BYTES, redirects included; control characters
//          become blanks, a folded line becomes one line.
// Threads: an object belongs to one thread at a time.

#pragma once

#include <string>
#include <string_view>

struct CONTENT_RANGE
{
    long long nFirst = 0;  // bytes
    long long nLast = 0;   // the last one itself
    long long nTotal = -1; // of the whole; -1 if the server does not tell
};

class HttpHeaders
{
public:
    static constexpr size_t MAX_BYTES = 256 * 1024;

    // A line with its line end. A status line begins the next answer, whose fields take the place of those before.
    // Lines behind the empty one that ends a header (trailers) are counted and dropped, and behind the final header all
    // lines are trailers. False: more than MAX_BYTES.
    bool AddLine(std::string_view strLine);
    void Clear();

    int GetStatus() const { return m_nStatus; }        // 100 to 599 or what else three digits say; 0 without an answer
    bool GetIsComplete() const { return m_bComplete; } // the empty line has come
    // Complete, and nothing else follows by itself: no interim answer, no redirect that names a place.
    bool GetIsFinal() const;
    // The status line and the fields, each with "\n" at its end; no empty line.
    const std::string& GetText() const { return m_strText; }
    // The value of the first field of that name, case ignored, trimmed; empty if there is none.
    std::string GetValue(std::string_view strName) const;
    bool HasValue(std::string_view strName) const;

    bool GetAcceptsRanges() const;                        // in bytes
    bool GetContentRange(CONTENT_RANGE& range) const;     // false: none, or not one that makes sense
    std::string GetValidator() const;                     // for If-Range: a strong ETag, else the date; may be empty
    bool GetIsSameEntity(const HttpHeaders& other) const; // false if ETag or date, where both have it, differ
    // Content-Encoding; empty for "identity", which is none.
    std::string GetContentEncoding() const;

    // Header text as characters: UTF-8, or Latin-1 where it is none.
    static std::wstring Widen(std::string_view str);

private:
    static bool IsStatusLine(std::string_view strLine);
    void BeginAnswer(std::string_view strLine);
    std::string_view FindField(std::string_view strName) const;

    std::string m_strText;
    size_t m_nTotalBytes = 0; // of all answers, as they came
    int m_nStatus = 0;
    bool m_bComplete = false;
};
