// The forms in which a string crosses a library border, and the scoped narrow views of a string.

#pragma once

class LyString;

// Whoever wants text from another library puts a LyDllString around a string of its own and passes this interface;
// the other library fills it through the table, so that neither knows how the other's strings are laid out.
class ILyDllString
{
public:
    virtual const wchar_t* Get() const = 0;
    virtual void Set(const wchar_t* p, int nLength) const = 0; // a copy; a negative length measures, null is empty
    virtual void Empty() const = 0;
    virtual wchar_t* GetBuffer(int nChars, bool bKeepContents) const = 0;
    virtual void ReleaseBuffer(int nLength) const = 0; // -1 measures

protected:
    ~ILyDllString() = default;
};

class LyDllString final : public ILyDllString
{
public:
    LyDllString(LyString& strTarget) : m_pString(&strTarget) {}
    LyDllString(LyString* pTarget) : m_pString(pTarget) {}

    const wchar_t* Get() const override;
    void Set(const wchar_t* p, int nLength) const override;
    void Empty() const override;
    wchar_t* GetBuffer(int nChars, bool bKeepContents) const override;
    void ReleaseBuffer(int nLength) const override;

private:
    LyString* m_pString; // not owned
};

// The text with one byte for each character below 256 and "?" for the others. No code page is applied.
class LyStringANSI
{
public:
    LyStringANSI(const LyString& str, unsigned int nCodePage = 0);
    ~LyStringANSI() { delete[] m_pText; }
    LyStringANSI(const LyStringANSI&) = delete;
    LyStringANSI& operator=(const LyStringANSI&) = delete;
    operator const char*() const { return m_pText; }
    const char* Get() const { return m_pText; }

private:
    char* m_pText;
};

// The text in the UTF-8 of this system (see LyCharacterHelper).
class LyStringUTF8
{
public:
    LyStringUTF8(const LyString& str);
    ~LyStringUTF8() { delete[] m_pText; }
    LyStringUTF8(const LyStringUTF8&) = delete;
    LyStringUTF8& operator=(const LyStringUTF8&) = delete;
    operator const char*() const { return m_pText; }
    const char* Get() const { return m_pText; }

private:
    char* m_pText;
};
