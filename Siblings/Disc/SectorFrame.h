// The frame of a data sector: what stands around the bytes that an image stores (ECMA-130, 14; for XA the "System
// Description CD-ROM XA", 4.3).
//
//   bytes      mode 1         mode 2            mode 2, XA form 1     mode 2, XA form 2
//   0 to 11    sync           sync              sync                  sync
//   12 to 15   header         header            header                header     minute, second, frame (BCD), mode
//   16 to 23   user data      user data         subheader, twice      subheader, twice
//   from 24    ... to 2063    ... to 2351       user data to 2071     user data to 2347
//   the rest   EDC, 0, ECC                      EDC, ECC              EDC

#pragma once

#include "DiscImage.h"

// The bytes of a sector that the form stores, and where in the whole sector they stand.
int GetStoredBytes(DISC_TRACK_MODE mode);
int GetStoredOffset(DISC_TRACK_MODE mode);

// Turns stored sectors into whole ones, in place. pBuffer has room for nRoom whole sectors, and the stored ones stand,
// packed, at its very end: sector 0 at byte nRoom * (2352 - stored bytes). The first nSectors of them, at most nRoom,
// become whole sectors from the start of the buffer on. nLBA is the address of the first.
void SpreadSectors(unsigned char* pBuffer, int nRoom, int nSectors, int nLBA, DISC_TRACK_MODE mode);

// Sectors that nobody stores: silence, or a frame around zeros.
void FillEmptySectors(unsigned char* pBuffer, int nSectors, int nLBA, DISC_TRACK_MODE mode);
