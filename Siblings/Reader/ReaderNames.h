// Which kind of reader a name asks for, and the form in which the name goes to the system or to a server.
//
//   /a/b.wav, a.wav, (Install Drive):/a    a local name, taken as it stands
//   file:///a/b%20c.wav                    a local name with percent escapes; a host "localhost" may stand in front
//   http://host/a b?c=d                    a URL; blanks and what is not ASCII become percent escapes behind the host
//   ftp://host/a                           a scheme that nobody here serves
//
// Case:    schemes and "localhost" in any case.
// Threads: functions without state.

#pragma once

#include <string>
#include <string_view>

enum READER_KIND
{
    READER_KIND_NONE = 0, // an empty name, or another scheme
    READER_KIND_LOCAL = 1,
    READER_KIND_FILE_URL = 2,
    READER_KIND_HTTP = 3 // http or https
};

// Whether a colon belongs to a scheme follows RFC 3986, 3.1: "/tmp/a://b" is a local name.
READER_KIND GetReaderKind(std::wstring_view strName);

// The path of a local name or of a file URL, as bytes for the system. An escape may name any byte; one that is not
// followed by two digits stays as it stands.
std::string GetLocalPath(const wchar_t* pName);

// A URL as it goes to the server, UTF-8. Escapes that are in it already stay.
std::string GetRequestURL(std::wstring_view strURL);

// The host of a URL, for messages: neither user nor password nor port.
std::string GetHostOfURL(std::string_view strURL);
