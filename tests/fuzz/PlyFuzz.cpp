#include "CloudFuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return vrk::test::fuzzCloud([](std::string_view bytes) { return vrk::station::parsePly(bytes); }, data, size);
}
