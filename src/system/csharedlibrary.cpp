#include "tarnlib/csharedlibrary.h"

#include <utility>

#include "diag/assert/levels.h"
#include "seam/osmodules.h"
#include "strings/text/stringbuilder.h"
#include "system/longform.h"
#include "system/systemtext.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

namespace TarnLibA500 {
namespace {

constexpr DWORD kMaxPath = 32'768;

// The directory of a module, of the program for null, with its last slash; empty when the system does not tell.
SWCharString DirectoryOf(HMODULE module) {
    StringBuilder<wchar_t, 1> path(kMaxPath);
    const DWORD length = osmodules::Path(module, path.units(), kMaxPath);
    path.cut(length < kMaxPath ? length : 0);
    return path.isEmpty() ? SWCharString() : SWCharString(path.left(path.findLast(L"\\")) + L"\\");
}

// That of this library.
SWCharString OwnDirectory() {
    const HMODULE module = osmodules::At(reinterpret_cast<const void*>(&OwnDirectory));
    return module != nullptr ? DirectoryOf(module) : SWCharString();
}

SWCharString SystemDirectory() {
    wchar_t path[MAX_PATH];
    const DWORD length = osmodules::SystemDirectory(path, MAX_PATH);
    return length != 0 && length < MAX_PATH ? SWCharString(path) + L"\\" : SWCharString();
}

// An absolute path as the system takes it whatever its length.
SWCharString AnyLength(const SWCharString& path) {
    SWCharString full;
    return path.getLength() >= kShortPathEnd && FullSystemPath(path, full) ? LongForm(full) : path;
}

// Whether a directory has a file of that name; empty is no directory.
bool Holds(const SWCharString& directory, const SWCharString& file) {
    return !directory.isEmpty() && osmodules::IsThere(AnyLength(directory + file).getString());
}

[[noreturn]] void Fail(const SAnsiString& module, const SAnsiString& symbol, unsigned long code) {
    const CSharedLibraryException failure(module, symbol, code);
    TARN_TRACE_AT(levels::kFailure, "csharedlibrary", "%1", failure.toString());
    throw failure;
}

SWCharString SystemName(const SAnsiString& name) {
    SWCharString wide;
    if (!ToSystemExactly(name, wide)) Fail(name, SAnsiString(), ERROR_BAD_PATHNAME);
    return wide;
}

// The system looks for "name.dll" when it is given "name".
SWCharString FileNameOf(const SAnsiString& name) {
    const SWCharString wide = SystemName(name);
    return wide.find(L".").isAtEnd() ? SWCharString(wide + L".dll") : wide;
}

}  // namespace

CSharedLibraryException::CSharedLibraryException(const SAnsiString& module, const SAnsiString& symbol,
                                                 unsigned long code)
    : module_(module), symbol_(symbol), code_(code) {}

SAnsiString CSharedLibraryException::toString() const {
    SAnsiString text = module_ + ": ";
    text += symbol_.isEmpty() ? SAnsiString("cannot be loaded") : SAnsiString("has no function ") + symbol_;
    return text + " (" + SStringConv::ToString(code_) + "): " + SystemErrorText(code_);
}

CSharedLibrary::CSharedLibrary(const SAnsiString& name) {
    Load(name);
}

CSharedLibrary::CSharedLibrary(CSharedLibrary&& other) noexcept
    : module_(std::exchange(other.module_, nullptr)), name_(std::move(other.name_)) {}

CSharedLibrary& CSharedLibrary::operator=(CSharedLibrary&& other) noexcept {
    std::swap(module_, other.module_);
    std::swap(name_, other.name_);
    return *this;
}

CSharedLibrary::~CSharedLibrary() {
    Unload();
}

void CSharedLibrary::Load(const SAnsiString& name) {
    Unload();
    if (IsAbsolutePath(name)) return LoadAbsolute(name);
    const SWCharString file = FileNameOf(name);
    const SWCharString own = OwnDirectory();
    if (Holds(own, file)) return load(name, own + file, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (osmodules::KnowsSearchFlags()) return load(name, file, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    // What those flags mean, without them: a name alone would be looked for in the current directory, too.
    const SWCharString ofProgram = DirectoryOf(nullptr);
    const SWCharString directory = Holds(ofProgram, file) ? ofProgram : SystemDirectory();
    if (directory.isEmpty()) Fail(name, SAnsiString(), ERROR_MOD_NOT_FOUND);
    load(name, directory + file, LOAD_WITH_ALTERED_SEARCH_PATH);
}

void CSharedLibrary::LoadAbsolute(const SAnsiString& path) {
    Unload();
    if (!IsAbsolutePath(path)) Fail(path, SAnsiString(), ERROR_BAD_PATHNAME);
    load(path, SystemName(UnifyAllSlashes(path)), LOAD_WITH_ALTERED_SEARCH_PATH);
}

void CSharedLibrary::load(const SAnsiString& name, const SWCharString& path, unsigned long flags) {
    const SWCharString whole = flags == LOAD_WITH_ALTERED_SEARCH_PATH ? AnyLength(path) : path;
    module_ = static_cast<void*>(osmodules::Load(whole.getString(), flags));
    if (module_ == nullptr) Fail(name, SAnsiString(), GetLastError());
    name_ = name;
}

void CSharedLibrary::Unload() noexcept {
    if (module_ != nullptr) osmodules::Free(static_cast<HMODULE>(module_));
    module_ = nullptr;
    name_.empty();
}

void* CSharedLibrary::TryResolve(const char* symbol) const noexcept {
    if (module_ == nullptr || symbol == nullptr) return nullptr;
    return osmodules::Find(static_cast<HMODULE>(module_), symbol);
}

void* CSharedLibrary::Resolve(const char* symbol) const {
    void* const address = TryResolve(symbol);
    if (address == nullptr) Fail(name_, symbol, ERROR_PROC_NOT_FOUND);
    return address;
}

}  // namespace TarnLibA500
