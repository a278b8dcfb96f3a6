#include "PlainPlayer.h"
#include <dlfcn.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>

enum
{
    FIELD_DURATION = 1,
    FIELD_NAME = 2,
    FIELD_POSITION = 3,
    FIELD_TOTAL_SAMPLES = 12,
    TEXT_CHARS = 64,
    REQUEST_BYTES = 10000 /* no multiple of anything, and several of the plug-in's own steps */
};

typedef struct TEXT TEXT;
typedef struct INPUT INPUT;

/* The text that the plug-in fills: Get, Set, Empty, GetBuffer, ReleaseBuffer. */
typedef struct
{
    const wchar_t* (*Get)(const TEXT* pText);
    void (*Set)(const TEXT* pText, const wchar_t* p, int nLength);
    void (*Empty)(const TEXT* pText);
    wchar_t* (*GetBuffer)(const TEXT* pText, int nChars, bool bKeepContents);
    void (*ReleaseBuffer)(const TEXT* pText, int nLength);
} TEXT_TABLE;

struct TEXT
{
    const TEXT_TABLE* pTable;
    wchar_t* pChars; /* TEXT_CHARS of them */
};

/* An input object: the two places of the destructor, then what a player calls. */
typedef struct
{
    void (*Destroy)(INPUT* pInput);
    void (*DestroyAndFree)(INPUT* pInput);
    int (*Open)(INPUT* pInput, const wchar_t* pPath);
    int (*GetInformation)(INPUT* pInput, int nField, const TEXT* pResult);
    int (*SetInformation)(INPUT* pInput, int nField, const wchar_t* pValue);
    int (*DoCommand)(INPUT* pInput, int nCommand, long long nFirst, long long nSecond);
    int (*GetSamples)(INPUT* pInput, unsigned char* pBuffer, int nBytes);
} INPUT_TABLE;

struct INPUT
{
    const INPUT_TABLE* pTable;
};

static const wchar_t* TextGet(const TEXT* pText) { return pText->pChars; }

static void TextSet(const TEXT* pText, const wchar_t* p, int nLength)
{
    size_t nChars = p == NULL ? 0 : nLength < 0 ? wcslen(p) : (size_t)nLength;
    if (nChars >= TEXT_CHARS)
        nChars = TEXT_CHARS - 1;
    if (nChars > 0)
        wmemcpy(pText->pChars, p, nChars);
    pText->pChars[nChars] = 0;
}

static void TextEmpty(const TEXT* pText) { pText->pChars[0] = 0; }

static wchar_t* TextGetBuffer(const TEXT* pText, int nChars, bool bKeepContents)
{
    (void)bKeepContents;
    return nChars < TEXT_CHARS ? pText->pChars : NULL;
}

static void TextReleaseBuffer(const TEXT* pText, int nLength)
{
    if (nLength >= 0 && nLength < TEXT_CHARS)
        pText->pChars[nLength] = 0;
}

static const TEXT_TABLE s_TextTable = {TextGet, TextSet, TextEmpty, TextGetBuffer, TextReleaseBuffer};

static long long GetNumber(INPUT* pInput, int nField)
{
    wchar_t szText[TEXT_CHARS] = {0};
    const TEXT text = {&s_TextTable, szText};
    if (pInput->pTable->GetInformation(pInput, nField, &text) != 0)
        return -1;
    return wcstoll(szText, NULL, 10);
}

static long long Pull(INPUT* pInput, unsigned char* pBuffer, long long nBytes)
{
    long long nGot = 0;
    while (nGot < nBytes)
    {
        const long long nLeft = nBytes - nGot;
        const int nRequest = nLeft < REQUEST_BYTES ? (int)nLeft : REQUEST_BYTES;
        const int nCame = pInput->pTable->GetSamples(pInput, pBuffer + nGot, nRequest);
        if (nCame < 1)
            break;
        nGot += nCame;
    }
    return nGot;
}

static long long PlayInput(INPUT* pInput, const wchar_t* pPath, int nFromMS, unsigned char* pBuffer, long long nBytes,
                           PLAIN_TRACK* pTrack)
{
    const TEXT name = {&s_TextTable, pTrack->szName};
    if (pInput->pTable->Open(pInput, pPath) != 0)
        return -1;
    (void)pInput->pTable->GetInformation(pInput, FIELD_NAME, &name);
    pTrack->nDurationMS = GetNumber(pInput, FIELD_DURATION);
    pTrack->nTotalSamples = GetNumber(pInput, FIELD_TOTAL_SAMPLES);
    if (nFromMS > 0)
    {
        wchar_t szPosition[TEXT_CHARS];
        (void)swprintf(szPosition, TEXT_CHARS, L"%d", nFromMS);
        if (pInput->pTable->SetInformation(pInput, FIELD_POSITION, szPosition) != 0)
            return -1;
    }
    return Pull(pInput, pBuffer, nBytes);
}

/* The address of a function, which plain C cannot make of that of an object. */
static void FindFunction(void* pLibrary, const char* pName, void* pFunction)
{
    void* const pFound = dlsym(pLibrary, pName);
    memcpy(pFunction, &pFound, sizeof pFound);
}

long long PlainPlay(const char* pPlugin, const wchar_t* pPath, int nFromMS, unsigned char* pBuffer, long long nBytes,
                    PLAIN_TRACK* pTrack)
{
    bool (*pAttach)(void*) = NULL;
    void (*pDetach)(void) = NULL;
    INPUT* (*pGetInputSource)(void*) = NULL;
    void* const pLibrary = dlopen(pPlugin, RTLD_NOW | RTLD_LOCAL);
    if (pLibrary == NULL)
        return -1;
    FindFunction(pLibrary, "Attach", &pAttach);
    FindFunction(pLibrary, "Detach", &pDetach);
    FindFunction(pLibrary, "GetInputSource", &pGetInputSource);
    long long nGot = -1;
    if (pAttach != NULL && pDetach != NULL && pGetInputSource != NULL && pAttach(&nGot))
    {
        INPUT* const pInput = pGetInputSource(NULL);
        nGot = PlayInput(pInput, pPath, nFromMS, pBuffer, nBytes, pTrack);
        pInput->pTable->DestroyAndFree(pInput);
        pDetach();
    }
    (void)dlclose(pLibrary);
    return nGot;
}
