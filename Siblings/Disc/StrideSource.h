// A source that leaves something out: of each record of another source, only the first bytes.

#pragma once

#include "SectorSource.h"

// Records of nRecordBytes each, from the source's start on, of which the first nKeptBytes count. Sectors with their
// sub-channels behind them become sectors. The other source must live as long as this one.
std::unique_ptr<SectorSource> MakeStrideSource(SectorSource& source, long long nOffset, int nRecordBytes,
                                               int nKeptBytes);
