// Units of an audio CD, as IEC 60908 and MMC-3 lay them down. Every size below follows from the ones above it.

#pragma once

constexpr int LY_CD_FRAME_BYTES = 2 * 2;                                          // stereo, 16 bits each
constexpr int LY_CD_SECTOR_FRAMES = 588;                                          // sample frames in one sector
constexpr int LY_CD_SECTOR_BYTES = LY_CD_SECTOR_FRAMES * LY_CD_FRAME_BYTES;       // 2352
constexpr int LY_CD_SECTORS_PER_SECOND = 75;                                      // one sector is one MSF frame
constexpr int LY_CD_SECOND_BYTES = LY_CD_SECTORS_PER_SECOND * LY_CD_SECTOR_BYTES; // 176,400
constexpr int LY_CD_SAMPLE_RATE = LY_CD_SECTORS_PER_SECOND * LY_CD_SECTOR_FRAMES; // 44,100 Hz
constexpr int LY_CD_MAX_READ_SECTORS = 27;                                        // the most that one READ CD asks for
constexpr int LY_CD_MAX_READ_BYTES = LY_CD_MAX_READ_SECTORS * LY_CD_SECTOR_BYTES; // 63,504
constexpr int LY_CD_MAX_TRACKS = 99;
constexpr int LY_CD_MSF_OFFSET = 2 * LY_CD_SECTORS_PER_SECOND; // LBA 0 is MSF 00:02:00

static_assert(LY_CD_SECTOR_BYTES == 2352 && LY_CD_SECOND_BYTES == 176400 && LY_CD_SAMPLE_RATE == 44100);
static_assert(LY_CD_MAX_READ_BYTES == 63504);
