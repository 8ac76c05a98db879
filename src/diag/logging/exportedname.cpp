#include "diag/logging/exportedname.h"

#include <cxxabi.h>

#include <cstdint>
#include <cstdlib>
#include <cwchar>
#include <memory>

#include "seam/osmodules.h"
#include "system/systemtext.h"
#include "tarnlib/sstringconv.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

struct NearestExport {
    const char* name = nullptr;
    DWORD offset = 0;  ///< from the module's start
};

/// The export table of a module that is loaded.
class ExportTable {
  public:
    explicit ExportTable(HMODULE module) : base_(reinterpret_cast<const BYTE*>(module)) {
        const auto dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base_);
        const auto headers = reinterpret_cast<const IMAGE_NT_HEADERS32*>(base_ + dos->e_lfanew);
        const DWORD at = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
        if (at != 0) table_ = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(base_ + at);
    }

    NearestExport findNearest(DWORD offset) const {
        NearestExport nearest;
        if (table_ == nullptr) return nearest;
        const auto functions = part<DWORD>(table_->AddressOfFunctions);
        const auto names = part<DWORD>(table_->AddressOfNames);
        const auto ordinals = part<WORD>(table_->AddressOfNameOrdinals);
        for (DWORD i = 0; i < table_->NumberOfNames; ++i) {
            const DWORD start = functions[ordinals[i]];
            if (start <= offset && start >= nearest.offset) nearest = {part<char>(names[i]), start};
        }
        return nearest;
    }

  private:
    template <class T>
    const T* part(DWORD offset) const {
        return reinterpret_cast<const T*>(base_ + offset);
    }

    const BYTE* base_;
    const IMAGE_EXPORT_DIRECTORY* table_ = nullptr;
};

SAnsiString Demangled(const char* name) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                      &std::free);
    return status == 0 ? SAnsiString(text.get()) : SAnsiString(name);
}

SAnsiString ModuleName(HMODULE module) {
    wchar_t path[MAX_PATH];
    const DWORD length = osmodules::Path(module, path, MAX_PATH);
    if (length == 0 || length == MAX_PATH) return "?";
    const wchar_t* const slash = std::wcsrchr(path, L'\\');
    return FromSystem(slash != nullptr ? slash + 1 : path);
}

}  // namespace

SAnsiString DescribeCode(const void* address) {
    const HMODULE module = osmodules::At(address);
    if (module == nullptr) return "?";
    const auto offset = static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(address) -
                                           reinterpret_cast<std::uintptr_t>(module));
    const NearestExport nearest = ExportTable(module).findNearest(offset);
    SAnsiString text = ModuleName(module);
    if (nearest.name != nullptr) text.concat(" ").concat(Demangled(nearest.name));
    return text + "+0x" + SStringConv::ToString(offset - nearest.offset, 16);
}

}  // namespace TarnLibA500
