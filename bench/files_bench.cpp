// Files against the C++ library and the bare system calls: lines, whole texts, blocks, copies, walks through
// directories, and configuration files.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "tarnlib/UTFConverter.h"
#include "tarnlib/configfilereader.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/simplebuffer.h"

#include <windows.h>

using namespace TarnLibA500;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kTextBytes = 64 * 1024 * 1024;
constexpr std::size_t kCopiedBytes = 256 * 1024 * 1024;
constexpr std::uint32_t kBlockBytes = 64 * 1024;
constexpr int kWrittenBlocks = 256;
constexpr int kDirectories = 20;
constexpr int kFilesEach = 1000;
constexpr int kSections = 500;
constexpr int kKeysEach = 20;

// The files that all benchmarks share; made when the first of them runs, removed at the end.
class Folder {
  public:
    static const Folder& Get() {
        static const Folder folder;
        return folder;
    }
    fs::path lines() const {
        return made("lines", "The quick brown fox jumps over the lazy dog, again and again\n");
    }
    fs::path german() const {
        return made("german",
                    "Zw\xC3\xB6lf Boxk\xC3\xA4mpfer jagen Viktor quer \xC3\xBC"
                    "ber den Sylter Deich\n");
    }
    fs::path large() const { return made("large", std::string(1023, 'l') + "\n", kCopiedBytes); }
    fs::path written() const { return path_ / "written"; }
    fs::path tree() const;
    fs::path config() const;

  private:
    Folder() : path_(fs::temp_directory_path() / ("tarnlib-bench-" + std::to_string(GetCurrentProcessId()))) {
        fs::create_directories(path_);
    }
    ~Folder() { fs::remove_all(path_); }
    fs::path made(const char* name, const std::string& line, std::size_t size = kTextBytes) const {
        const fs::path file = path_ / name;
        if (fs::exists(file)) return file;
        std::string bytes;
        while (bytes.size() + line.size() <= size) bytes += line;
        std::ofstream(file, std::ios::binary) << bytes;
        return file;
    }

    fs::path path_;
};

fs::path Folder::tree() const {
    const fs::path root = path_ / "tree";
    for (int d = 0; d < kDirectories && !fs::exists(root / std::to_string(kDirectories - 1)); ++d) {
        const fs::path directory = root / std::to_string(d);
        fs::create_directories(directory);
        for (int f = 0; f < kFilesEach; ++f) std::ofstream(directory / ("file-" + std::to_string(f))) << f;
    }
    return root;
}

fs::path Folder::config() const {
    const fs::path file = path_ / "config";
    if (fs::exists(file)) return file;
    std::ofstream stream(file, std::ios::binary);
    for (int s = 0; s < kSections; ++s) {
        stream << "[section " << s << "]\n";
        for (int k = 0; k < kKeysEach; ++k)
            stream << "setting." << (k * 7 % kKeysEach) << " = value of " << k << "\n";
    }
    return file;
}

SAnsiString Name(const fs::path& path) {
    return path.string().c_str();
}

HANDLE Open(const fs::path& path) {
    return CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

std::string ReadWhole(const fs::path& path) {
    const HANDLE file = Open(path);
    std::string bytes(GetFileSize(file, nullptr), '\0');
    DWORD done = 0;
    ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr);
    CloseHandle(file);
    return bytes;
}

// --- lines ---

void OurLines(benchmark::State& state) {
    const SAnsiString name = Name(Folder::Get().lines());
    for (auto _ : state) {
        SFile file(name, SFile::readOnly, 0, SFile::denyNothing);
        std::size_t bytes = 0;
        while (!file.eof()) bytes += file.readLine().getLength();
        benchmark::DoNotOptimize(bytes);
    }
}

void StreamLines(benchmark::State& state, std::ios::openmode mode) {
    const fs::path path = Folder::Get().lines();
    for (auto _ : state) {
        std::ifstream file(path, mode);
        std::size_t bytes = 0;
        for (std::string line; std::getline(file, line);) bytes += line.size();
        benchmark::DoNotOptimize(bytes);
    }
}

// --- whole texts ---

void OurText(benchmark::State& state, fs::path (Folder::*path)() const) {
    const SAnsiString name = Name((Folder::Get().*path)());
    for (auto _ : state) {
        SFile file(name, SFile::readOnly, 0, SFile::denyNothing);
        benchmark::DoNotOptimize(file.readString().getString());
    }
}

void ReadAndConvert(benchmark::State& state, fs::path (Folder::*path)() const) {
    const fs::path file = (Folder::Get().*path)();
    for (auto _ : state) {
        const std::string bytes = ReadWhole(file);
        SOCAString wide;
        CUTFConverter::UTF8ToUTF16(bytes.data(), static_cast<std::uint32_t>(bytes.size()), wide);
        benchmark::DoNotOptimize(wide.getString());
    }
}

// --- blocks ---

void OurBlocks(benchmark::State& state) {
    const std::string block(kBlockBytes, 'b');
    const SAnsiString name = Name(Folder::Get().written());
    for (auto _ : state) {
        SFile file(name, SFile::writeOnly | SFile::truncate, 0, SFile::denyNothing);
        for (int i = 0; i < kWrittenBlocks; ++i) file.write(block.data(), kBlockBytes);
    }
}

void SystemBlocks(benchmark::State& state) {
    const std::string block(kBlockBytes, 'b');
    const fs::path path = Folder::Get().written();
    for (auto _ : state) {
        const HANDLE file =
            CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD done = 0;
        for (int i = 0; i < kWrittenBlocks; ++i) WriteFile(file, block.data(), kBlockBytes, &done, nullptr);
        CloseHandle(file);
    }
}

// --- copies over a file ---

void OurCopy(benchmark::State& state) {
    const SAnsiString from = Name(Folder::Get().large());
    const SAnsiString to = Name(Folder::Get().written());
    for (auto _ : state) SFileSys::copyFile(from, to, true);
}

// As careful: to a new name, to the disk, and then over the old file.
void SystemCopy(benchmark::State& state) {
    const fs::path from = Folder::Get().large();
    const fs::path to = Folder::Get().written();
    const fs::path beside = to.wstring() + L".new";
    for (auto _ : state) {
        CopyFileW(from.c_str(), beside.c_str(), TRUE);
        const HANDLE file =
            CreateFileW(beside.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        FlushFileBuffers(file);
        CloseHandle(file);
        MoveFileExW(beside.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING);
    }
}

void OurBytes(benchmark::State& state) {
    const SAnsiString name = Name(Folder::Get().lines());
    for (auto _ : state) {
        SSimpleBuffer bytes;
        benchmark::DoNotOptimize(bytes.loadFromFile(name, false));
    }
}

void SystemBytes(benchmark::State& state) {
    const fs::path path = Folder::Get().lines();
    for (auto _ : state) benchmark::DoNotOptimize(ReadWhole(path).data());
}

// --- directories ---

unsigned long long WalkSize(const std::wstring& directory) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((directory + L"\\*").c_str(), &entry);
    unsigned long long total = 0;
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &entry)) {
        const bool isDirectory = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        if (entry.cFileName[0] == L'.') continue;
        total += isDirectory ? WalkSize(directory + L"\\" + entry.cFileName) : entry.nFileSizeLow;
    }
    FindClose(search);
    return total;
}

void OurTreeSize(benchmark::State& state) {
    const SAnsiString tree = Name(Folder::Get().tree());
    for (auto _ : state) benchmark::DoNotOptimize(SFileSys::rsizeEx(tree));
}

void BareTreeSize(benchmark::State& state) {
    const std::wstring tree = Folder::Get().tree().wstring();
    for (auto _ : state) benchmark::DoNotOptimize(WalkSize(tree));
}

void OurListing(benchmark::State& state) {
    const fs::path tree = Folder::Get().tree();
    for (auto _ : state) {
        SIArray<FileProp> entries;
        for (int d = 0; d < kDirectories; ++d)
            SFileSys::listing(Name(tree / std::to_string(d)), "*", entries);
        benchmark::DoNotOptimize(entries.GetSize());
    }
}

void BareListing(benchmark::State& state) {
    const std::wstring tree = Folder::Get().tree().wstring();
    for (auto _ : state) benchmark::DoNotOptimize(WalkSize(tree));
}

// --- configuration ---

void OurConfig(benchmark::State& state) {
    const SAnsiString name = Name(Folder::Get().config());
    for (auto _ : state) {
        ConfigFileReader reader;
        benchmark::DoNotOptimize(reader.initialize(name));
    }
}

void ReadAndFindLines(benchmark::State& state) {
    const fs::path path = Folder::Get().config();
    for (auto _ : state) {
        const std::string bytes = ReadWhole(path);
        std::size_t lines = 0;
        for (std::size_t at = 0; (at = bytes.find('\n', at)) != bytes.npos; ++at) ++lines;
        benchmark::DoNotOptimize(lines);
    }
}

void GetValue(benchmark::State& state, int section) {
    ConfigFileReader reader;
    reader.initialize(Name(Folder::Get().config()));
    const SAnsiString name = ("section " + std::to_string(section)).c_str();
    for (auto _ : state) benchmark::DoNotOptimize(reader.getValue(name, "setting.7", "").getLength());
}

void MapOfMaps(benchmark::State& state) {
    std::map<std::string, std::map<std::string, std::string>> sections;
    for (int s = 0; s < kSections; ++s) {
        for (int k = 0; k < kKeysEach; ++k)
            sections["section " + std::to_string(s)]["setting." + std::to_string(k)] =
                "value of " + std::to_string(k);
    }
    const std::string name = "section " + std::to_string(kSections - 1);
    for (auto _ : state) {
        const std::string value = sections.find(name)->second.find("setting.7")->second;
        benchmark::DoNotOptimize(value.data());
    }
}

}  // namespace

BENCHMARK(OurLines)->Name("BM_File_ReadLine_64MiB/ours")->UseRealTime();
BENCHMARK_CAPTURE(StreamLines, text, std::ios::in)->Name("BM_File_ReadLine_64MiB/getline")->UseRealTime();
BENCHMARK_CAPTURE(StreamLines, binary, std::ios::in | std::ios::binary)
    ->Name("BM_File_ReadLine_64MiB/binary getline")
    ->UseRealTime();
BENCHMARK_CAPTURE(OurText, ascii, &Folder::lines)->Name("BM_File_ReadString_ASCII/ours")->UseRealTime();
BENCHMARK_CAPTURE(ReadAndConvert, ascii, &Folder::lines)
    ->Name("BM_File_ReadString_ASCII/ReadFile and one pass")
    ->UseRealTime();
BENCHMARK_CAPTURE(OurText, german, &Folder::german)->Name("BM_File_ReadString_German/ours")->UseRealTime();
BENCHMARK_CAPTURE(ReadAndConvert, german, &Folder::german)
    ->Name("BM_File_ReadString_German/ReadFile and one pass")
    ->UseRealTime();
BENCHMARK(OurBlocks)->Name("BM_File_Write_Blocks/ours")->UseRealTime();
BENCHMARK(SystemBlocks)->Name("BM_File_Write_Blocks/WriteFile")->UseRealTime();
BENCHMARK(OurCopy)->Name("BM_File_Copy_Over_256MiB/ours")->UseRealTime();
BENCHMARK(SystemCopy)->Name("BM_File_Copy_Over_256MiB/CopyFileW, flush and rename")->UseRealTime();
BENCHMARK(OurBytes)->Name("BM_File_Load_64MiB/ours")->UseRealTime();
BENCHMARK(SystemBytes)->Name("BM_File_Load_64MiB/ReadFile")->UseRealTime();
BENCHMARK(OurTreeSize)->Name("BM_Files_Size_Of_20000/ours")->UseRealTime();
BENCHMARK(BareTreeSize)->Name("BM_Files_Size_Of_20000/FindFirstFileW")->UseRealTime();
BENCHMARK(OurListing)->Name("BM_Files_List_20000/ours")->UseRealTime();
BENCHMARK(BareListing)->Name("BM_Files_List_20000/FindFirstFileW")->UseRealTime();
BENCHMARK(OurConfig)->Name("BM_Config_Load_10000_Keys/ours")->UseRealTime();
BENCHMARK(ReadAndFindLines)->Name("BM_Config_Load_10000_Keys/read and find lines")->UseRealTime();
BENCHMARK_CAPTURE(GetValue, last, kSections - 1)->Name("BM_Config_Get_Value_Last/ours");
BENCHMARK_CAPTURE(GetValue, first, 0)->Name("BM_Config_Get_Value_Last/first section");
BENCHMARK(MapOfMaps)->Name("BM_Config_Get_Value_Last/map of maps");
