#include "textoption.h"

#include "streams.h"
#include "system.h"

namespace tarn {
namespace {

std::string AllOfStandardInput() {
    constexpr std::size_t kBlock = 64 * 1024;
    Source source("-");
    std::string all;
    for (std::string block = source.read(kBlock); !block.empty(); block = source.read(kBlock)) all += block;
    return all;
}

}  // namespace

TarnLibA500::SAnsiString TextOf(const Options& options) {
    const std::string text = options.has("text") ? options.value("text") : AllOfStandardInput();
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

void PrintResult(const Options& options, const std::string& result) {
    Print(options.has("text") ? result + "\n" : result);
}

}  // namespace tarn
