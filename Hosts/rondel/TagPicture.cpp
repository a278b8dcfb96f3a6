// Images for tags.

#include "HostError.h"
#include "TagEdit.h"
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>

namespace
{
using namespace std::string_view_literals;

constexpr std::uintmax_t MAX_PICTURE_BYTES = 0x8000000; // 128 MiB: half of what a whole tag can have

struct IMAGE_FORM
{
    size_t nOffset;
    std::string_view strBytes;
    const char* pMime;
};
constexpr IMAGE_FORM s_aryForms[] = {
    {0, "\xFF\xD8\xFF"sv, "image/jpeg"}, {0, "\x89PNG\r\n\x1A\n"sv, "image/png"},
    {0, "GIF8"sv, "image/gif"},          {0, "BM"sv, "image/bmp"},
    {0, "II*\0"sv, "image/tiff"},        {0, "MM\0*"sv, "image/tiff"},
    {8, "WEBP"sv, "image/webp"},
};

const char* FindMime(std::string_view strImage)
{
    for (const IMAGE_FORM& form : s_aryForms)
        if (strImage.size() > form.nOffset && strImage.substr(form.nOffset).starts_with(form.strBytes))
            return form.pMime;
    return nullptr;
}
} // namespace

std::shared_ptr<const TAG_PICTURE> LoadTagPicture(const std::string& strPath)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(strPath, error))
        throw HostError("the picture " + strPath + " is not there, or no file; check its name.");
    const std::uintmax_t nBytes = std::filesystem::file_size(strPath, error);
    if (error || nBytes > MAX_PICTURE_BYTES)
        throw HostError("the picture " + strPath + " is larger than 128 MiB, too much for a tag; make it smaller.");
    std::ifstream file(strPath, std::ios::binary);
    std::string strImage(static_cast<size_t>(nBytes), '\0');
    if (!file.read(strImage.data(), static_cast<std::streamsize>(nBytes)))
        throw HostError("the picture " + strPath + " cannot be read (" + std::strerror(errno) +
                        "); check whether it may be.");
    const char* pMime = FindMime(strImage);
    if (pMime == nullptr)
        throw HostError("the picture " + strPath + " is no JPEG, PNG, GIF, BMP, TIFF or WebP image; convert it first.");
    auto pPicture = std::make_shared<TAG_PICTURE>();
    (void)pPicture->image.FromBuffer(strImage.data(), static_cast<int>(nBytes)); // it has bytes
    pPicture->strMime = pMime;
    return pPicture;
}
