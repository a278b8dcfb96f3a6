// The read-cache measurement, apart from the drive and the clock that it is run on.

#pragma once

#include "CDUnits.h"
#include <atomic>

// It relies on a fact of drives: a range that is in the cache comes back at least four times faster than from the disc.
// A binary search, in sectors, for the largest block that is still served from the cache.
class ReadCacheMeasurement
{
public:
    static constexpr unsigned int MIN_BUFFER_BYTES = 16384; // a smaller declared buffer is not worth a measurement
    static constexpr int FIRST_SECTOR = 100;                // where the timed reads start
    static constexpr int SPIN_UP_SECTOR = 50;               // read once, before anything is timed
    static constexpr int MIN_RATIO = 4;                     // from the disc against from the cache
    static constexpr int MAX_BYTES_FOR_EIGHTH = 2540167;    // up to here the search starts at an eighth of the buffer
    static constexpr int EIGHTH = 8 * LY_CD_SECTOR_BYTES;   // 18,816
    static constexpr int LOW_BOUND_OF_LARGE_BUFFERS = 135;  // sectors, an eighth of MAX_BYTES_FOR_EIGHTH
    static_assert(MAX_BYTES_FOR_EIGHTH / EIGHTH == LOW_BOUND_OF_LARGE_BUFFERS);

    // What the measurement asks of the world.
    class Drive
    {
    public:
        virtual bool Read(int nSector, int nCount) = 0;
        virtual unsigned int Now() = 0; // milliseconds, wrapping
        virtual bool GetCancelled() = 0;

    protected:
        ~Drive() = default;
    };

    ReadCacheMeasurement(Drive& drive, std::atomic<int>& nResultBytes) : m_Drive(drive), m_nResultBytes(nResultBytes) {}

    // Searches below the declared buffer size. The result, in bytes, grows while the search goes on, and keeps what was
    // proven when a read fails or the search is cancelled.
    void Run(unsigned int nBufferBytes);

private:
    bool TimeRead(int nCount, unsigned int& nMs);
    bool TestSize(int nCount, bool& bFits);

    Drive& m_Drive;
    std::atomic<int>& m_nResultBytes;
};
