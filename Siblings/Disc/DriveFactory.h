// DriveFactory: which kind of drive a path is for.

#pragma once

#include "ServiceDrive.h"
#include <memory>
#include <string>

// Makes the drive of an absolute path, UTF-8: a device node is hardware, everything else an image. Nothing is opened
// yet. Null, with one sentence, if nothing of the kind can be there.
std::unique_ptr<ServiceDrive> CreateServiceDrive(const std::string& strPath, std::string& strError);
