// The library as a DLL that comes and goes in a thread that lives on.
#include <gtest/gtest.h>

#include <thread>

#include "support/committed.h"
#include "support/scratch_folder.h"

#include <windows.h>

namespace {

/// Makes a MiB of strings by what a module exports, and never destroys them.
void MakeTexts(HMODULE module) {
    // A member function takes the object as this convention takes its first argument, and has no second one.
    using Make = void(__fastcall*)(void* self, int none, const char* text);
    const auto make = reinterpret_cast<Make>(
        reinterpret_cast<void*>(GetProcAddress(module, "_ZN11TarnLibA5009SString_tIcLi0EEC1EPKc")));
    ASSERT_NE(make, nullptr);
    void* string = nullptr;
    for (int i = 0; i < 20'000; ++i) make(&string, 0, "a text");
}

void LoadAndUnload(const std::filesystem::path& path) {
    const HMODULE module = LoadLibraryW(path.c_str());
    ASSERT_NE(module, nullptr);
    MakeTexts(module);
    std::thread([&] { MakeTexts(module); }).join();
    EXPECT_TRUE(FreeLibrary(module));
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
