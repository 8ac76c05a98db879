#include "tarnlib/sversion.h"

#include <algorithm>

#include "tarnlib/sassert.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kSeparators = " .,";

void ReportNoNumber(const SAnsiString& a, const SAnsiString& b) {
    SAnsiString message;
    message << "Could not compare version strings \"" << a << "\" and \"" << b << "\"";
    SAssert("sversion", __LINE__, "FALSE", message.getString());
}

}  // namespace

int SVersion::CompareVersions(const SAnsiString& a, const SAnsiString& b) {
    if (a == b) return 0;
    SIArray<SAnsiString> left;
    SIArray<SAnsiString> right;
    SStringHelper::makeWords(a, left, kSeparators, false, false);
    SStringHelper::makeWords(b, right, kSeparators, false, false);
    const auto toNumber = [&](const SAnsiString& component) {
        int number = 0;
        if (!SAnsiStringConv::FromString(component, number)) ReportNoNumber(a, b);
        return number;
    };
    const std::uint32_t common = std::min(left.GetSize(), right.GetSize());
    for (std::uint32_t i = 0; i < common; ++i) {
        const int leftNumber = toNumber(left[i]);
        const int rightNumber = toNumber(right[i]);
        if (leftNumber != rightNumber) return leftNumber < rightNumber ? -1 : 1;
    }
    if (left.GetSize() == right.GetSize()) return 0;
    return left.GetSize() < right.GetSize() ? -1 : 1;
}

}  // namespace TarnLibA500
