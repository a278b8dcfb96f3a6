#include "Output.h"
#include "HostError.h"
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>
#include <string>

void PrintJson(const nlohmann::ordered_json& value)
{
    std::puts(value.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

void CheckOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw HostError(std::string("the listing could not be written (") + std::strerror(errno) +
                        "); choose another place for it.");
}
