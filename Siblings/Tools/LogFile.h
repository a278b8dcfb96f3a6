// A log file that several processes append to at once, and that is turned over when it has grown enough.
//
// A line is one write to a file opened for appending, so that lines of different processes never mix. At MAX_BYTES the
// file becomes FILE.1, what was FILE.1 becomes FILE.2, and the oldest one goes. Whoever turns it over holds a lock on
// the old file; everybody else sees that the name stands for another file now, and opens that one.
// Threads: one at a time.

#pragma once

#include <cstddef>
#include <string>
#include <sys/stat.h>

class LogFile
{
public:
    static constexpr long long MAX_BYTES = 8 * 1024 * 1024;
    static constexpr int KEPT_FILES = 3; // the current one among them

    explicit LogFile(std::string strPath, long long nMaxBytes = MAX_BYTES, int nKeptFiles = KEPT_FILES);
    ~LogFile();
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    // Opens the file if need be. False with the reason in errno; a part of the text may stand in the file then.
    bool Append(const char* pText, size_t nBytes);
    const std::string& GetPath() const { return m_strPath; }

    // One write, taken up again only where a signal or a short count interrupted it. False with errno.
    static bool Write(int nFile, const char* pText, size_t nBytes);

private:
    bool Open();
    void Close();
    bool IsCurrent(struct stat& status) const; // the name still stands for the open file
    bool IsFull(const struct stat& status, size_t nMoreBytes) const;
    bool TurnOver(size_t nMoreBytes);
    std::string GetOldName(int nAge) const; // 0 is the current file

    std::string m_strPath;
    long long m_nMaxBytes;
    int m_nKeptFiles;
    int m_nFile = -1;
    dev_t m_nDevice = 0; // of the open file
    ino_t m_nNode = 0;
};
