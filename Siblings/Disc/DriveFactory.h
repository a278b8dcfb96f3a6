// DriveFactory: which kind of drive a path is for: hardware behind a device node, an image that behaves like hardware
// as its profile tells, or an image. Each of them has its audio put right by the read offset that is set for its model
// (ReadOffsetLookup.h). Threads: any; a function without state.

#pragma once

#include "ServiceDrive.h"
#include <memory>
#include <string>

// Makes the drive of an absolute path, UTF-8: nothing is opened yet but a profile, to see whether there is one. Null,
// with one sentence, if nothing of the kind can be there.
std::unique_ptr<ServiceDrive> CreateServiceDrive(const std::string& strPath, std::string& strError);
