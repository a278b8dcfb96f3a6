// RipNames: what all files of a rip are called, before anything is read: those of the pieces, and those of the report.
//
// Shape:   names are relative to the folder of the report, which is the folder that all files have in common.
// Errors:  HostError.
// Threads: any.

#pragma once

#include "NameTemplate.h"
#include "RipCollector.h"
#include "RipEncoders.h"
#include <string>
#include <vector>

// What is made and removed again as a proof that a folder can be written to; it grows as every file does.
constexpr const char* RIP_PROOF_NAME = ".rondel";

// An encoder of the rip, as far as its files' names and the report go.
struct RIP_ENCODER_FACTS
{
    std::string strName;
    std::string strSuffix; // without the dot
    std::string strLibrary;
    std::string strSettings;
};

struct RIP_NAMES
{
    std::string strFolder; // of the report, absolute or from the current one; with no slash at its end
    std::string strBase;   // of the report's files, without a suffix
    std::vector<RIP_GROUP> aryGroups;
    std::vector<std::string> aryCues; // one for each encoder of an image, relative; otherwise none

    std::string GetPath(const std::string& strName) const { return strFolder + "/" + strName; }
    std::string GetLog() const { return GetPath(strBase + ".log"); }
    std::string GetJson() const { return GetPath(strBase + ".json"); }
    std::string GetHtml() const { return GetPath(strBase + ".html"); }
    std::string GetState() const { return GetPath(strBase + ".unfinished"); }
    std::vector<std::string> GetAll() const; // full names of all that is to come out
};

struct RIP_NAME_WISHES
{
    std::string strTo; // a folder; empty: the current one
    std::string strTemplate = DEFAULT_NAME_TEMPLATE;
    bool bImage = false;
    std::string strPicture;
};

// The disc and the pieces are those of the report.
RIP_NAMES MakeRipNames(const RIP_REPORT& report, const std::vector<RIP_ENCODER_FACTS>& aryEncoders,
                       const RIP_NAME_WISHES& wishes);
