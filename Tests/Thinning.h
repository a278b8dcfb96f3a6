// How much of a long series the builds with a sanitizer run.
//
// A kill at each system call, thousands of worlds out of a seed, minutes of music, and half an hour of tones prove what
// becomes of files, and figures. Neither depends on a sanitizer, under which a program takes three to fifteen times as
// long; and a sanitizer has seen all the code of such a series after a small part of it. So the builds with one run
// that part, and the builds without run every single piece.
//
//     for (unsigned int nSeed = 1; nSeed <= Thinning::Some(5000, 500); ++nSeed)

#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define RONDEL_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define RONDEL_TEST_SANITIZED 1
#endif
#endif

namespace Thinning
{
#ifdef RONDEL_TEST_SANITIZED
constexpr bool SANITIZED = true;
#else
constexpr bool SANITIZED = false;
#endif

// How many of a series of nAll are run: nSome of them under a sanitizer.
template <typename NUMBER>
constexpr NUMBER Some(NUMBER nAll, NUMBER nSome)
{
    return SANITIZED ? nSome : nAll;
}

// A series of kills leaves out all but each n-th call, and begins elsewhere in each test. The first and the last call
// are always among them. A state of the files that a test asks for lasts longer than that.
constexpr int KILL_EVERY = Some(1, 8);
} // namespace Thinning

// For what a test reckons by itself to compare with, or makes to begin with, byte by byte: functions of plain loops,
// which no sanitizer needs to watch.
#define TEST_RECKONING __attribute__((no_sanitize("address", "thread", "undefined")))
