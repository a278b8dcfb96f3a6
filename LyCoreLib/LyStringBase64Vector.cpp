// Base64 on machines that can put the bytes of a vector in any order: twelve bytes become sixteen characters at once.

#include "LyStringBase64Details.h"

#if defined(__x86_64__)
#include "LyDateTime.h"
#include <tmmintrin.h>

namespace
{
constexpr int BLOCK_BYTES = 12;
constexpr int BLOCK_CHARS = 16;
constexpr int VECTOR_BYTES = 16;
static_assert(sizeof(wchar_t) == 4);

__m128i Load(const unsigned char* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }

// The first twelve bytes as sixteen digits. Of the three bytes of a group, aaaaaabb bbbbcccc ccdddddd, each 32 bits
// first get the 16 bits that hold digits a and b, then those that hold c and d. A product moves each to its place.
__attribute__((target("ssse3"))) __m128i SplitDigits(__m128i bytes)
{
    const __m128i order = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    const __m128i groups = _mm_shuffle_epi8(bytes, order); // bbbbcccc aaaaaabb ccdddddd bbbbcccc
    const __m128i a_c = _mm_and_si128(groups, _mm_set1_epi32(0x0FC0FC00));
    const __m128i b_d = _mm_and_si128(groups, _mm_set1_epi32(0x003F03F0));
    return _mm_or_si128(_mm_mulhi_epu16(a_c, _mm_set1_epi32(0x04000040)),  // a >> 10, c >> 6
                        _mm_mullo_epi16(b_d, _mm_set1_epi32(0x01000010))); // b << 4, d << 8
}

// A digit and its character differ by a number that is the same for all of a kind: capitals, small letters, each
// figure, plus, slash. The kinds are numbered so that a shuffle finds it.
__attribute__((target("ssse3"))) __m128i MakeCharacters(__m128i digits)
{
    constexpr char FIGURE = '0' - 52;
    const __m128i differences = _mm_setr_epi8('a' - 26, FIGURE, FIGURE, FIGURE, FIGURE, FIGURE, FIGURE, FIGURE, FIGURE,
                                              FIGURE, FIGURE, '+' - 62, '/' - 63, 'A', 0, 0);
    constexpr char CAPITALS = 13;
    const __m128i beyondLetters = _mm_subs_epu8(digits, _mm_set1_epi8(51)); // 0 for all letters
    const __m128i isCapital = _mm_cmplt_epi8(digits, _mm_set1_epi8(26));
    const __m128i kinds = _mm_or_si128(beyondLetters, _mm_and_si128(isCapital, _mm_set1_epi8(CAPITALS)));
    return _mm_add_epi8(digits, _mm_shuffle_epi8(differences, kinds));
}

void StoreWide(wchar_t* pOut, __m128i characters)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(characters, zero);
    const __m128i high = _mm_unpackhi_epi8(characters, zero);
    auto* pVectors = reinterpret_cast<__m128i*>(pOut);
    _mm_storeu_si128(pVectors, _mm_unpacklo_epi16(low, zero));
    _mm_storeu_si128(pVectors + 1, _mm_unpackhi_epi16(low, zero));
    _mm_storeu_si128(pVectors + 2, _mm_unpacklo_epi16(high, zero));
    _mm_storeu_si128(pVectors + 3, _mm_unpackhi_epi16(high, zero));
}

// A vector is longer than a block: the last one is loaded from further ahead, so that nothing behind the line is read.
__attribute__((target("ssse3"))) void EncodeLineByVectors(wchar_t* pOut, const unsigned char* p)
{
    using namespace LyStringBase64Details;
    constexpr int BLOCKS = LINE_BYTES / BLOCK_BYTES;
    for (int i = 0; i < BLOCKS - 1; ++i)
        StoreWide(pOut + i * BLOCK_CHARS, MakeCharacters(SplitDigits(Load(p + i * BLOCK_BYTES))));
    const __m128i last = _mm_srli_si128(Load(p + LINE_BYTES - VECTOR_BYTES), VECTOR_BYTES - BLOCK_BYTES);
    StoreWide(pOut + (BLOCKS - 1) * BLOCK_CHARS, MakeCharacters(SplitDigits(last)));
}
} // namespace

LyStringBase64Details::ENCODE_LINE LyStringBase64Details::GetVectorEncodeLine()
{
    return (LyCpu::GetFlags() & LyCpu::SSSE3) != 0 ? EncodeLineByVectors : nullptr;
}

#else

LyStringBase64Details::ENCODE_LINE LyStringBase64Details::GetVectorEncodeLine() { return nullptr; }

#endif
