#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A DLL that is loaded while the program runs.
///
/// An object owns its module and unloads it when it goes; addresses taken from it are valid until then. Modules
/// are never looked for in the current directory. Names are in the process's ANSI code page, or in UTF-8
/// (SNarrowText); one with a zero byte inside, or with bytes that are no character, is refused (error 161).
/// Objects may be moved; one thread at a time uses an object.
///
///     try {
///         CSharedLibrary library("mirelcrypto.dll");
///         auto open = reinterpret_cast<OpenFunction>(library.Resolve("Open"));
///         ...
///     } catch (const CSharedLibraryException& failure) {
///         Report(failure.toString());   // mirelcrypto.dll: cannot be loaded (126): Module not found.
///     }
namespace TarnLibA500 {

/// What went wrong: the module, the function if one was looked for, and the system's error code.
class TARN_API CSharedLibraryException {
  public:
    /// The module, the function or nothing, and the system's error code.
    CSharedLibraryException(const SAnsiString& module, const SAnsiString& symbol, unsigned long code);

    /// The module, as it was asked for.
    const SAnsiString& GetModule() const { return module_; }
    /// Empty when the module itself could not be loaded.
    const SAnsiString& GetSymbol() const { return symbol_; }
    /// The system's error code: 126 the module is missing, 127 the function is.
    unsigned long GetErrorCode() const { return code_; }
    /// "MODULE: cannot be loaded (CODE): TEXT" or "MODULE: has no function SYMBOL (CODE): TEXT", with the
    /// system's text.
    SAnsiString toString() const;

  private:
    SAnsiString module_;
    SAnsiString symbol_;
    unsigned long code_;
};

/// A DLL that is loaded while the program runs.
class TARN_API CSharedLibrary {
  public:
    /// No module.
    CSharedLibrary() noexcept = default;
    /// Loads a module as Load does.
    explicit CSharedLibrary(const SAnsiString& name);
    /// Takes the module and leaves the other object without one.
    CSharedLibrary(CSharedLibrary&& other) noexcept;
    /// Swaps the modules.
    CSharedLibrary& operator=(CSharedLibrary&& other) noexcept;
    /// A module is one object's.
    CSharedLibrary(const CSharedLibrary&) = delete;
    /// A module is one object's.
    CSharedLibrary& operator=(const CSharedLibrary&) = delete;
    /// Unloads the module.
    ~CSharedLibrary();

    /// Loads a module in place of the one before: by its name from the directory of this library, and
    /// otherwise from the program's and the system's directories. Throws CSharedLibraryException, and then
    /// holds no module.
    void Load(const SAnsiString& name);
    /// The same by an absolute path; what the module itself needs is found beside it. Another path is refused
    /// (error 161, bad path name).
    void LoadAbsolute(const SAnsiString& path);
    /// True when there is a module.
    bool IsLoaded() const noexcept { return module_ != nullptr; }
    /// Gives the module up; addresses taken from it are not valid any more. Nothing happens when there is none.
    void Unload() noexcept;

    /// The address of an exported function; throws CSharedLibraryException when there is none.
    void* Resolve(const char* symbol) const;
    /// The same; null when there is none.
    void* TryResolve(const char* symbol) const noexcept;

  private:
    void load(const SAnsiString& name, const SWCharString& path, unsigned long flags);

    void* module_ = nullptr;
    SAnsiString name_;
};

}  // namespace TarnLibA500
