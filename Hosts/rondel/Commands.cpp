#include "Commands.h"

std::string CheckFileName(const std::string& strName) { return strName.empty() ? "the name of a file is empty" : ""; }
