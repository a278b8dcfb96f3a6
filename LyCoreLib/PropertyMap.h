// LyPropertyMap: a small store of text values under text keys, with typed access, a compact text form and an XML form.
//
// Keys:    compared without case; stored as they were first inserted. A null key is the empty one.
// Text:    "(1:2)(5:Speed)(2:16)(4:Mode)(2:on)": a field with the count, then a field with key and one with value for
//          each entry (the fields of LyString::SaveString). No terminator: it can stand inside a longer text.
// XML:     <Root version="1.0">, then <Item Name="Speed">16</Item> for each entry, then </Root>. A line ends in
//          carriage return and line feed; nothing follows the closing tag. Control characters of a value become "?".
// Order:   by the hash of the keys, the same in every form; nothing may rely on an order of insertion.
// Errors:  a missing value is the caller's default. Damaged text reads as empty fields.
// Threads: no lock; the owner guards a map.

#pragma once

#include "LyMap.h"
#include "LyString.h"

class CMarkup;

// The order of the operations is their order in the virtual table: other libraries call them there. The numbers count
// from 1.
// Deliberate: there is no virtual destructor, since the table must begin with GetHasProperty. Nobody deletes a derived
// object through this class; a class that is to be deleted so, adds destructors behind these operations.
class LyPropertyMap
{
public:
    using PROPERTIES = LyStringMap<LyString, false, LyString, const LyString&, true>;

    LyPropertyMap() = default;
    LyPropertyMap(const LyPropertyMap& other) { (void)LyPropertyMap::CopyProperties(other); }
    LyPropertyMap& operator=(const LyPropertyMap& other);
    ~LyPropertyMap() { LyPropertyMap::DeleteProperties(); }

    virtual bool GetHasProperty(const wchar_t* pName) const;                                     // 1
    virtual LyString GetProperty(const wchar_t* pName, const wchar_t* pDefault = nullptr) const; // 2
    virtual int GetPropertyInt(const wchar_t* pName, int nDefault = 0) const;                    // 3
    virtual double GetPropertyDouble(const wchar_t* pName, double fDefault = 0) const;           // 4
    virtual void* GetPropertyPointer(const wchar_t* pName, void* pDefault = nullptr) const;      // 5

    // With bRemoveIfEmpty an empty value removes the key.
    virtual void SetProperty(const wchar_t* pName, const LyString& strValue, bool bRemoveIfEmpty = false); // 6
    virtual void SetPropertyInt(const wchar_t* pName, int nValue);                                         // 7
    virtual void SetPropertyPointer(const wchar_t* pName, void* pValue);                                   // 8
    virtual void SetPropertyDouble(const wchar_t* pName, double fValue);                                   // 9
    virtual void DeleteProperties();                                                                       // 10
    virtual bool RemoveProperty(const wchar_t* pName);                                                     // 11

    virtual bool CopyProperties(const LyPropertyMap& other); // 12: always true
    // Whether both hold as many entries and this one's values are, with case, those of the other. A missing key of the
    // other reads as empty.
    virtual bool CompareProperties(const LyPropertyMap& other) const; // 13

    virtual void SaveProperties(LyString& strOut, bool bSaveValues = true) const; // 14: appends; without values "(1:0)"
    virtual void LoadProperties(const LyString& strIn);                           // 15
    virtual void LoadProperties(const LyString& strIn, int& nPosition);           // 16: moves the position
    virtual LyString SavePropertiesXML(const LyString& strRootName, bool bEmptyIfNoProperties,
                                       double fVersion) const; // 17
    // False, and nothing changed, without the root element or if its version is not fVersion. There is no migration
    // between versions: another version counts as absent. An empty text is true and changes nothing.
    virtual bool LoadPropertiesXML(const LyString& strXML, const LyString& strRootName, double fVersion); // 18
    virtual void SavePropertiesExistingXML(CMarkup& markup) const; // 19: elements at the document's current position
    virtual void LoadPropertiesExistingXML(CMarkup& markup);       // 20: the document's following "Item" elements
    virtual LyString DumpProperties(const LyString& strPrefix, const LyString& strPostfix) const; // 21

    PROPERTIES* m_pProperties = nullptr; // owned; made by the first insert, null while the map holds nothing
};
static_assert(sizeof(LyPropertyMap) == 2 * sizeof(void*), "the table and one field");
