// ReadOffset: by how many sample frames the disc service corrects what a drive reads, as the host shows it.

#pragma once

#include <string>

// The correction that is set for drives of that name; 0 if there is none, or none that the service takes. Without the
// tools library nothing is set.
int FindReadOffset(const std::string& strVendor, const std::string& strModel);
