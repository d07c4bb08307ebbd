#include "fuzz_target.h"
#include "pxcpp/base64.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace {

struct free_deleter
{
    void operator()(void *memory) const { std::free(memory); }
};
template <typename T>
using Freed = std::unique_ptr<T, free_deleter>;

const char *table()
{
    return PXBase64SetTableCode(nullptr);
}

void requireOctetsComeBack(const std::uint8_t *data, std::size_t size)
{
    const Freed<char> text(PXBase64Encode(data, size));
    if (!text)
        return;
    const Freed<char> textEx(EnCodeBase64Ex(data, int(size), table()));
    require(std::strcmp(text.get(), textEx.get()) == 0);
    std::uint64_t length = 0;
    const Freed<unsigned char> back(PXBase64Decode(text.get(), &length));
    require(length == size && std::memcmp(back.get(), data, size) == 0);
}

// What the strict decoder takes, padding at the end only, the lenient one reads alike.
void requireDecodersAgree(const std::string &any)
{
    const std::size_t size = any.size();
    int count = -1;
    const std::unique_ptr<unsigned char[]> lenient(
        DeCodeBase64Ex(any.c_str(), int(size), table(), &count));
    require(count >= 0 && std::size_t(count) <= size);
    std::uint64_t length = 0;
    const Freed<unsigned char> strict(PXBase64Decode(any.c_str(), &length));
    if (strict && any.find('\0') == std::string::npos && any.find('=') >= size - 2) {
        require(length == std::uint64_t(count));
        require(std::memcmp(strict.get(), lenient.get(), length) == 0);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static std::FILE *const nowhere = std::freopen("/dev/null", "w", stdout);
    require(nowhere);
    requireOctetsComeBack(data, size);
    requireDecodersAgree(std::string(data, data + size));
    return 0;
}
