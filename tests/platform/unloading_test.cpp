// The library as a DLL that comes and goes in a thread that lives on.
#include <gtest/gtest.h>

#include <thread>

#include "support/committed.h"
#include "support/scratch_folder.h"

#include <windows.h>

namespace {

/// Loads a module and has two threads make a MiB of strings each by what it exports, which are never destroyed.
void LoadAndUnload(const std::filesystem::path& path) {
    // A member function takes the object as this convention takes its first argument, and has no second one.
    using Make = void(__fastcall*)(void* self, int none, const char* text);
    const HMODULE module = LoadLibraryW(path.c_str());
    const auto address = GetProcAddress(module, "_ZN11TarnLibA5009SString_tIcLi0EEC1EPKc");
    ASSERT_NE(address, nullptr);
    const auto makeTexts = [make = reinterpret_cast<Make>(reinterpret_cast<void*>(address))] {
        void* string = nullptr;
        for (int i = 0; i < 20'000; ++i) make(&string, 0, "a text");
    };
    makeTexts();
    std::thread(makeTexts).join();
    FreeLibrary(module);
    EXPECT_EQ(GetModuleHandleW(path.c_str()), nullptr);
}

}  // namespace

TEST(Unloading, TextsAndThreadsLeaveNothingBehind) {
    const std::filesystem::path folder = tarntest::MakeScratchFolder("unloading");
    const std::filesystem::path copy = folder / "copy.dll";
    std::filesystem::copy_file(std::filesystem::path(_pgmptr).parent_path() / "tarnlib-5-0.dll", copy);
    std::thread([&] {
        LoadAndUnload(copy);
        const std::size_t first = tarntest::CommittedBytes();
        for (int round = 0; round < 20; ++round) LoadAndUnload(copy);
        EXPECT_LT(tarntest::CommittedBytes(), first + (4U << 20));  // of 40 MiB
    }).join();
    std::filesystem::remove_all(folder);
}
