// What a caller wants of a URL beyond its address: method, header lines and data.
//
// Names:   "HTTPREQUEST_TYPE"  a method: GET, HEAD, POST, PUT, DELETE ... Empty: POST if there is data, GET otherwise.
//          "INFO_HEADERS"      header lines, joined with "\n". "Name:" without a value sends an empty field.
//          All other names are accepted and mean nothing.
// Form:    names and values in turns, joined with "|". A "|" within a value cannot be written.
// Refused: a method that is no token, a header line without a name, and one with a control character (a caller's text
//          must not add lines of its own making). Nothing is sent then; GetRefusal tells why.
// Threads: an object belongs to one thread at a time.

#pragma once

#include <string>
#include <string_view>
#include <vector>

class UrlRequest
{
public:
    void SetParameters(std::wstring_view strJoined); // takes the place of all that was set before
    bool SetParameter(std::wstring_view strName, std::wstring_view strValue); // false for a name without meaning
    void SetData(const void* p, int nBytes);                                  // copied; null or less than a byte: none

    const std::string& GetMethod() const; // as it is sent
    bool GetIsHead() const { return GetMethod() == "HEAD"; }
    bool GetIsPlainGet() const { return GetMethod() == "GET" && m_strData.empty(); }
    // As a transport takes them: "Name: value", and "Name;" for an empty field.
    const std::vector<std::string>& GetHeaderLines() const { return m_aryHeaderLines; }
    bool HasHeader(std::string_view strName) const; // case ignored
    const std::string& GetData() const { return m_strData; }
    std::string GetRefusal() const; // a sentence; empty if the request can be sent

private:
    void SetHeaderLines(std::string_view strJoined);
    void AddHeaderLine(std::string_view strLine);

    std::string m_strMethod;
    std::vector<std::string> m_aryHeaderLines;
    std::string m_strBadLine; // the first that was refused
    std::string m_strData;
};
