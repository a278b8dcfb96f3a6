// Listings on standard output.

#pragma once

#include <nlohmann/json_fwd.hpp>

// A text that is no UTF-8 does not stop the listing; it comes with replacement characters.
void PrintJson(const nlohmann::ordered_json& value);

// Throws HostError if not all that was printed could be written.
void CheckOutput();
