// What stops a command: one sentence for the user, with a way out. Thrown inside the host only, shown by main.

#pragma once

#include <stdexcept>
#include <string>

class HostError : public std::runtime_error
{
public:
    explicit HostError(const std::string& strSentence) : std::runtime_error(strSentence) {}
};
