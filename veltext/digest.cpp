// Makes digests with the system's MD5.
#include "veltext/digest.h"

#include <cstdint>

#include <sys/types.h>

#include <md5.h>

namespace veltext {

std::string digestOf(std::string_view bytes)
{
    char digits[MD5_DIGEST_STRING_LENGTH];
    MD5Data(reinterpret_cast<const std::uint8_t *>(bytes.data()), bytes.size(), digits);
    return digits;
}

} // namespace veltext
