// CMarkup: the small XML reader and writer.
//
// Shape:   the document is one text. No tree of strings is built: a record of 32 bytes for each element tells where it
//          lies in the text. Edits change the text and move the offsets behind them. Offsets and lengths are
//          characters.
// Place:   the current parent, the current main element, which is one of its children, and the current child, which is
//          one of the main element's. Position 0 is the document itself; 0 also stands for "none".
// Errors:  an ill-formed document yields what can be reached, and the first error in words. Nothing that reads can
//          fail in another way: it answers false, 0 or an empty string, also for a position that is none.
// Limits:  a start tag may have 0xfffff characters, an end tag 1023: more does not fit the record. A longer tag in a
//          text is an error and is passed over; an edit that would make one is refused.
// Cost:    parsing allocates nothing but records, and names of open elements once end tags do not match. It does not
//          recurse, and its time is about linear in the length of any text. An edit moves what stands behind it.
// Threads: a document belongs to one thread at a time.

#pragma once

#include "LyString.h"

enum MARKUP_NODE : int
{
    MARKUP_NODE_DOCUMENT_END = -2,
    MARKUP_NODE_ERROR = -1,
    MARKUP_NODE_END_TAG = 0,
    MARKUP_NODE_START_TAG = 1,
    MARKUP_NODE_TEXT = 2,
    MARKUP_NODE_WHITE_SPACE = 4,
    MARKUP_NODE_CDATA = 8,
    MARKUP_NODE_INSTRUCTION = 16,
    MARKUP_NODE_COMMENT = 32,
    MARKUP_NODE_DOCUMENT_TYPE = 64
};

// In the flags and level of a position record.
enum MARKUP_POSITION_FLAGS : unsigned int
{
    MARKUP_POSITION_LEVEL = 0xffff,        // the low bits: open elements around it where it was read; sticks at 0xffff
    MARKUP_POSITION_FIRST_CHILD = 0x80000, // of its parent
    MARKUP_POSITION_NO_END_TAG = 0x100000, // no end tag: treated as empty
    MARKUP_POSITION_ILL_FORMED = 0x200000, // holds an ill-formed part
    MARKUP_POSITION_ERROR = 0x800000       // an error in this element
};

// What a start tag is beside a node.
enum MARKUP_NODE_FLAGS : int
{
    MARKUP_NODE_EMPTY_ELEMENT = 1 // ends in "/>"
};

// For x_AddElem and EscapeText.
enum MARKUP_EDIT_FLAGS : int
{
    MARKUP_EDIT_CDATA = 1,          // the value becomes a CDATA section
    MARKUP_EDIT_NO_LINE_END = 2,    //
    MARKUP_EDIT_BLANK_IN_EMPTY = 4, // "<name />" for an element without a value
    MARKUP_EDIT_NO_END_TAG = 16,    // "<name>" alone; refused with a value
    MARKUP_EDIT_ATTRIBUTE = 0x100,  // EscapeText: quotes, too
    MARKUP_EDIT_IN_FRONT = 0x1000,  // in front of the current element; without one, as the parent's first
    MARKUP_EDIT_BEHIND = 0x2000,    // behind the current element; without one, as the parent's last. The default
    MARKUP_EDIT_AS_CHILD = 0x4000   // about the current child of the main element, not about the main element
};

// For the document and for TokenPos.
enum MARKUP_TOKEN_FLAGS : int
{
    MARKUP_IGNORE_CASE = 8,      // element and attribute names are found without regard to case
    MARKUP_TOKEN_QUOTED = 0x8000 // the token stood in quotes, which are not part of it
};

// Where an element lies. Positions are indices of such records; see CMarkup::x_GetPos.
struct MARKUP_POSITION
{
    static constexpr int START_TAG_MASK = 0x2fffff; // deliberate: without bit 20, which therefore no length may use
    static constexpr int MAX_START_TAG = 0xfffff;
    static constexpr int END_TAG_SHIFT = 22;
    static constexpr int MAX_END_TAG = 0x3ff;

    int m_nStart;          // offset of the start tag
    int m_nLength;         // of the whole element, end tag included
    unsigned int m_nTags;  // length of the start tag in the low bits, of the end tag in the top 10 bits
    unsigned int m_nFlags; // MARKUP_POSITION_FLAGS
    int m_nParent;
    int m_nFirstChild;
    int m_nNextSibling;
    int m_nPreviousSibling; // deliberate: of a first child this is the last one, so that the last is found at once

    int GetStartTagLength() const { return static_cast<int>(m_nTags & START_TAG_MASK); }
    int GetEndTagLength() const { return static_cast<int>(m_nTags >> END_TAG_SHIFT); }
    void SetTagLengths(int nStartTag, int nEndTag)
    {
        m_nTags = static_cast<unsigned int>(nStartTag) | static_cast<unsigned int>(nEndTag) << END_TAG_SHIFT;
    }
    int GetLevel() const { return static_cast<int>(m_nFlags & MARKUP_POSITION_LEVEL); }
    int GetEnd() const { return m_nStart + m_nLength; }
    int GetContentStart() const { return m_nStart + GetStartTagLength(); }
    int GetContentEnd() const { return GetEnd() - GetEndTagLength(); }
    bool HasContent() const { return GetEndTagLength() != 0; } // an empty element has no place for any
};
static_assert(sizeof(MARKUP_POSITION) == 32);

class CMarkup
{
public:
    // A cursor in a text. The text is borrowed and ends at its first zero.
    struct TokenPos
    {
        // At the start of the document, or of an empty one; null is empty.
        explicit TokenPos(const wchar_t* pDocument = nullptr, int nFlags = MARKUP_IGNORE_CASE)
            : m_pDocument(pDocument != nullptr ? pDocument : L""), m_nTokenFlags(nFlags)
        {
        }
        int GetLength() const { return m_nRight - m_nLeft; }
        // Whether the token is the name at the start of pName. There the name must end, or go on with one of " =/[]".
        bool Match(const wchar_t* pName) const;

        int m_nLeft = 0;  // the token: from here
        int m_nRight = 0; // to here, exclusive
        int m_nNext = 0;  // where reading goes on
        const wchar_t* m_pDocument;
        int m_nTokenFlags; // MARKUP_TOKEN_FLAGS
    };

    // A node, found or to be inserted.
    struct NodePos
    {
        int m_nNodeType = MARKUP_NODE_DOCUMENT_END; // MARKUP_NODE
        int m_nStart = 0;
        int m_nLength = 0;
        int m_nFlags = 0; // read: MARKUP_NODE_FLAGS; to be inserted: MARKUP_EDIT_FLAGS
        // The text of a node to be inserted, or the message of the first error that was read into this record.
        LyString m_strText;
    };

    // The elements that are open while the parser runs: m_nStart and m_nLength of their start tags.
    class NodeStack
    {
    public:
        NodeStack() = default;
        ~NodeStack() { delete[] m_pNodes; }
        NodeStack(const NodeStack&) = delete;
        NodeStack& operator=(const NodeStack&) = delete;

        bool Push(int nStart, int nLength); // false if there is no memory
        void Pop() { --m_nCount; }
        int GetSize() const { return m_nCount; }
        const NodePos& operator[](int nIndex) const { return m_pNodes[nIndex]; }

    private:
        NodePos* m_pNodes = nullptr;
        int m_nCount = 0;
        int m_nCapacity = 0;
    };

    CMarkup() = default;
    CMarkup(const wchar_t* pDocument) { (void)SetDoc(pDocument); }
    CMarkup(const LyString& strDocument) { (void)SetDoc(strDocument); }
    ~CMarkup();
    CMarkup(const CMarkup&) = delete;
    CMarkup& operator=(const CMarkup&) = delete;

    // ---- The document (MarkupParse.cpp)
    bool SetDoc(const wchar_t* pDocument); // IsWellFormed; null is empty
    bool SetDoc(const LyString& strDocument);
    bool IsWellFormed() const;
    const LyString& GetDoc() const { return m_strDocument; }
    const LyString& GetError() const { return m_strError; } // empty, or the first error

    // ---- Moving (MarkupFind.cpp)
    // Goes to the next element of that name, or on that path, behind the main element, among the children of the
    // current parent. Null or empty: to the next element. See x_FindElem for paths.
    bool FindElem(const wchar_t* pName = nullptr);
    bool IntoElem();  // the main element becomes the parent
    bool OutOfElem(); // the parent becomes the main element, what was main its child

    // ---- The main element
    LyString GetTagName() const { return x_GetTagName(m_nMainPos); }
    LyString GetAttrib(const wchar_t* pName) const { return x_GetAttrib(m_nMainPos, pName); }
    LyString GetData() const { return x_GetData(m_nMainPos); }
    bool AddElem(const wchar_t* pName, const wchar_t* pValue = nullptr, int nFlags = 0)
    {
        return x_AddElem(pName, pValue, nFlags);
    }
    bool SetAttrib(const wchar_t* pName, const wchar_t* pValue) { return x_SetAttrib(m_nMainPos, pName, pValue); }

    // ---- Text of element data and of attribute values (MarkupText.cpp)
    static LyString EscapeText(const wchar_t* pText, int nFlags = 0);
    // -1 measures. Reads the five names and character references; what is none of these stays as it is.
    static LyString UnescapeText(const wchar_t* pText, int nLength = -1);
    static LyString x_EncodeCDATASection(const wchar_t* pText);

    // ---- Parsing
    bool x_ParseDoc();
    // Reads elements behind the token as children of nParent, up to the end of the text. The first of them, or 0.
    int x_ParseElem(int nParent, TokenPos& token);
    // The next node behind the token, whose left and right become the name of a tag. The node's type.
    static int x_ParseNode(TokenPos& token, NodePos& node);

    // ---- Finding
    // An element by its path. "a": the first child of nParent of that name behind its child nAfter (0: of all);
    // "a/b": the first child b of such an element; "/a/b": the same from the document on, whatever nParent and nAfter
    // say; "//a": the first element of that name behind nAfter in the order of the text, "//a/b" one within another.
    // A name may be "*" or empty, for any, and may be followed by one of "[n]", the n-th of that name in its parent,
    // from 1; "[@attr]", with that attribute; "[child]", with such a child. A path of more than MAX_STEPS names leads
    // nowhere. Behind "//" a number costs a walk over the siblings in front. Returns the element's position, or 0.
    int x_FindElem(int nParent, int nAfter, const wchar_t* pPath) const;
    // The next name behind the token. At least one character, so that a separator is a token, too. False at the end.
    static bool x_FindName(TokenPos& token);
    static bool x_FindAny(const wchar_t* pText, int& nOffset); // skips white space; whether something remains
    // In a tag, from behind its "<": makes the value of the attribute the token. With a null or empty pName it is the
    // name of attribute number n, from 0.
    static bool x_FindAttrib(TokenPos& token, const wchar_t* pName, int n = 0);

    // ---- Reading (MarkupText.cpp)
    static LyString x_GetToken(const TokenPos& token);
    LyString x_GetTagName(int nPos) const; // of the current processing instruction: its target
    LyString x_GetAttrib(int nPos, const wchar_t* pName) const;
    LyString x_GetData(int nPos) const;

    // ---- Editing (MarkupEdit.cpp). False, and nothing changed, for a bad name or position, a tag above its limit, or
    // a document above the limit of a string.
    bool x_SetAttrib(int nPos, const wchar_t* pName, const wchar_t* pValue);
    bool x_AddElem(const wchar_t* pName, const wchar_t* pValue, int nFlags); // the new element becomes current
    // Makes room for a node in nParent about nRelative (0: none) and puts the node's text there, with its line ends.
    // The node's start becomes its offset; nRelative becomes the child behind which it stands, 0 if it is the first.
    bool x_InsertNew(int nParent, int& nRelative, NodePos& node);
    void x_LinkElem(int nParent, int nPrevious, int nPos); // as a child of nParent behind nPrevious (0: as its first)
    bool x_DocChange(int nOffset, int nReplaced, const LyString& strText);
    // Moves what stands behind the start of nPos by nShift: its content, unless bBehind; all that follows; the
    // lengths of the elements around it.
    void x_Adjust(int nPos, int nShift, bool bBehind);
    // The same for a change within nParent: behind its child nPos, or in front of all its children if that is 0.
    void x_AdjustForNode(int nParent, int nPos, int nShift);

    // ---- Position records (MarkupPositions.cpp)
    bool x_AllocPosArray(int nPositions); // at least that many; 0: half as many again
    int x_GetFreePos();                   // 0 if there is no memory
    MARKUP_POSITION& x_GetPos(int nPos) { return m_ppSegments[nPos >> SEGMENT_BITS][nPos & (SEGMENT_RECORDS - 1)]; }
    const MARKUP_POSITION& x_GetPos(int nPos) const { return const_cast<CMarkup*>(this)->x_GetPos(nPos); }
    bool x_IsElement(int nPos) const { return nPos > 0 && nPos < m_nFreePos && nPos < m_nAllocated; }

    static constexpr int MAX_STEPS = 64;
    static constexpr int SEGMENT_BITS = 16;
    static constexpr int SEGMENT_RECORDS = 1 << SEGMENT_BITS;

    LyString m_strDocument;
    LyString m_strError;
    int m_nParentPos = 0;
    int m_nMainPos = 0;
    int m_nChildPos = 0;
    int m_nFreePos = 1;    // the next position that was never used
    int m_nDeletedPos = 0; // positions to be used again, linked by their next sibling
    int m_nNodeType = 0;   // the current node that is no element; none if its length is 0
    int m_nNodeOffset = 0;
    int m_nNodeLength = 0;
    int m_nDocFlags = MARKUP_IGNORE_CASE;
    int* m_pSavedPositions = nullptr; // owned, an array; nothing in this system saves positions
    MARKUP_POSITION** m_ppSegments = nullptr;
    int m_nAllocated = 0;       // positions there is room for
    int m_nSegmentCapacity = 0; // of the array of segments
};
