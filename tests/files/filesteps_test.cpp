#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <optional>
#include <set>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/locale_scope.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/simplebuffer.h"

using namespace TarnLibA500;
using tarntest::Bytes;
using tarntest::Failure;
using tarntest::ReadBytes;
using tarntest::Text;
namespace fs = std::filesystem;

namespace {

std::string Shown(bool is) {
    return is ? "yes" : "no";
}

std::string Shown(const SAnsiString& text) {
    return Bytes(text);
}

std::string Shown(const std::string& text) {
    return text;
}

template <class Number>
std::string Shown(Number number) {
    return std::to_string(number);
}

/// What a step does, and what it gives as text.
class Step {
  public:
    template <class Call>
    Step(Call call)
        : run_([call] {
              if constexpr (!std::is_void_v<decltype(call())>) return Shown(call());
              call();
              return std::string();
          }) {}
    std::string operator()() const { return run_(); }

  private:
    std::function<std::string()> run_;
};

/// Plays the steps of a case file in an empty folder.
class FileSteps : public testing::Test {
  protected:
    ~FileSteps() override {
        leave();
        SFileSys::rremove(Text(folder_));
    }

    void play(const std::string& cases) {
        const tarntest::AssertRecorder recorder;
        for (const auto& fields : tarntest::ReadCases(cases)) {
            arguments_.clear();
            for (const std::string& field : fields) arguments_.push_back(expanded(field));
            const std::string expected = arguments_.back();
            arguments_.back().clear();
            arguments_.resize(5);
            std::string seen;
            seen = Failure([&] { seen = steps_.at(arguments_[0])(); }) + seen;
            EXPECT_TRUE(seen == expected) << test_ << ": " << testing::PrintToString(fields)
                                          << "\nseen: " << testing::PrintToString(seen.substr(0, 300));
        }
        EXPECT_EQ(recorder.count(), 0U);
    }

  private:
    /// @ is the folder, {9x} stands for xxxxxxxxx.
    std::string expanded(const std::string& field) const {
        std::string all;
        for (std::size_t i = 0; i < field.size(); ++i) {
            if (field[i] == '@') {
                all += folder_.string();
            } else if (field[i] == '{') {
                const std::size_t end = field.find('}', i);
                all += std::string(std::stoul(field.substr(i + 1)), field[end - 1]);
                i = end;
            } else {
                all += field[i];
            }
        }
        return all;
    }

    SAnsiString text(std::size_t nth) const {
        return SAnsiString(arguments_[nth].data(), static_cast<std::uint32_t>(arguments_[nth].size()));
    }
    long long number(std::size_t nth) const { return std::stoll(arguments_[nth]); }
    fs::path onDisk() const {
        const bool isExact = arguments_[1].rfind("\\\\", 0) == 0;
        return isExact ? fs::u8path(arguments_[1]) : folder_ / fs::u8path(arguments_[1]);
    }
    SFile& file() { return files_[arguments_[1]]; }
    int mode(std::size_t nth) const {
        static const std::map<char, int> flags = {{'r', SFile::readOnly},     {'w', SFile::writeOnly},
                                                  {'b', SFile::readAndWrite}, {'-', 3},
                                                  {'c', SFile::create},       {'t', SFile::truncate},
                                                  {'a', SFile::append},       {'d', SFile::temporary}};
        int all = 0;
        for (const char flag : arguments_[nth]) all |= flags.at(flag);
        return all;
    }

    void leave() {
        files_.clear();
        SetCurrentDirectoryW(before_.c_str());
        SFileSys::giveAllAccess(Text(folder_), true);
    }
    void beginTest() {
        leave();
        SFileSys::rremoveContent(Text(folder_));
        SetCurrentDirectoryW(folder_.c_str());
        test_ = arguments_[1];
    }
    void write() {
        if (!fs::exists(onDisk().parent_path())) fs::create_directories(onDisk().parent_path());
        tarntest::WriteBytes(onDisk(), arguments_[2]);
    }
    std::string kind() const {
        return Shown(SFileSys::exists(text(1))) + (SFileSys::isDir(text(1)) ? " directory" : "") +
               (SFileSys::isFile(text(1)) ? " file" : "");
    }
    std::string clear() const {
        std::uint32_t freed = 77;
        const std::string failure = Failure([&] { SFileSys::removeContent(text(1), text(2), freed); });
        return failure + ":" + Shown(freed);
    }
    std::string listing() const {
        SIArray<FileProp> entries;
        SFileSys::listing(text(1), text(2), entries);
        std::set<std::string> lines;
        for (const FileProp& entry : entries)
            lines.insert(Bytes(entry.name) + (entry.isDirectory ? "/" : "=" + Shown(entry.size)) +
                         (entry.isExact ? "" : " shown"));
        std::string all;
        for (const std::string& line : lines) all += "<" + line + ">";
        return all;
    }
    std::string unique() const {
        const SAnsiString name = SFileSys::getUniqueFilename(text(1), text(2), text(3), true, 0);
        return Bytes(name).substr(0, arguments_[1].size() + 1 + arguments_[2].size());
    }
    std::string lines() const {
        SFile file(text(1), SFile::readOnly, 0, SFile::denyNothing);
        std::string all;
        while (!file.eof()) all += "<" + Bytes(file.readLine()) + ">";
        return all + Bytes(file.readLine());
    }
    SAnsiString twoLines() {
        const SAnsiString first = file().readLine();  // its memory must not serve the second one
        return file().readLine() + first;
    }
    std::string read() {
        std::string bytes(arguments_[2].empty() ? 1 : static_cast<std::size_t>(number(2)), '\0');
        bytes.resize(file().read(bytes.data(), static_cast<std::uint32_t>(bytes.size())));
        return bytes;
    }
    std::string load() const {
        SSimpleBuffer buffer("before", 6, false);
        const auto count = static_cast<std::uint32_t>(number(3));
        const bool isLoaded = buffer.loadFromFileEx(text(1), !arguments_[4].empty(), true, number(2), count);
        const auto* const bytes = reinterpret_cast<const char*>(buffer.getBufferProtected());
        return Shown(isLoaded) + " " + std::string(bytes, buffer.getNBytes());
    }
    bool save() const {
        SSimpleBuffer buffer;
        for (const char one : arguments_[2]) buffer << one;
        return buffer.saveToFile(text(1), arguments_[3].empty());
    }

    const fs::path folder_ = tarntest::MakeScratchFolder("filesteps");
    const fs::path before_ = fs::current_path();
    std::string test_;
    std::vector<std::string> arguments_;  // the first one is the step itself
    std::map<std::string, SFile> files_;
    std::optional<tarntest::LocaleScope> locale_;
    const std::map<std::string, Step> steps_ = {
        {"test", [this] { beginTest(); }},
        {"locale", [this] { locale_.emplace(arguments_[1].c_str()); }},
        // beside the library
        {"write", [this] { write(); }},
        {"read", [this] { return fs::exists(onDisk()) ? ReadBytes(onDisk()) : "none"; }},
        {"mkdir of others", [this] { fs::create_directories(onDisk()); }},
        {"cd of others", [this] { SetCurrentDirectoryW(onDisk().c_str()); }},
        // the file system
        {"is", [this] { return kind(); }},
        {"is drive", [this] { return SFileSys::isDrive(text(1)); }},
        {"is full", [this] { return SFileSys::isFullPath(text(1)); }},
        {"is program", [this] { return SFileSys::HasOwnerExePermission(text(1)); }},
        {"is writable", [this] { return SFileSys::HasOwnerWritePermission(text(1)); }},
        {"full path", [this] { return SFileSys::getFullPath(text(1)); }},
        {"long path", [this] { return SFileSys::toLongPath(text(1)); }},
        {"cd", [this] { SFileSys::setCurrentDirectory(text(1)); }},
        {"pwd", [] { return SFileSys::getCurrentDirectory(); }},
        {"mkdir", [this] { SFileSys::makeDirectory(text(1), SFile::defaultPermissions); }},
        {"mkdirs", [this] { SFileSys::makeDirectories(text(1), SFile::defaultPermissions); }},
        {"list", [this] { return listing(); }},
        {"count", [this] { return SFileSys::countAll(text(1)); }},
        {"count files", [this] { return SFileSys::countFiles(text(1)); }},
        {"copy", [this] { SFileSys::copyFile(text(1), text(2), false); }},
        {"copy over", [this] { SFileSys::copyFile(text(1), text(2), true); }},
        {"rename", [this] { SFileSys::renameFile(text(1), text(2)); }},
        {"replace", [this] { SFileSys::replaceFile(text(1), text(2)); }},
        {"remove", [this] { SFileSys::remove(text(1)); }},
        {"remove tree", [this] { SFileSys::rremove(text(1)); }},
        {"remove content", [this] { SFileSys::rremoveContent(text(1)); }},
        {"clear", [this] { return clear(); }},
        {"protect", [this] { SFileSys::giveAccess(text(1), SFile::ownerRMask); }},
        {"unprotect", [this] { SFileSys::giveAllAccess(text(1), true); }},
        {"size", [this] { return SFileSys::size(text(1)); }},
        {"exact size", [this] { return SFileSys::sizeEx(text(1)); }},
        {"tree size", [this] { return SFileSys::rsize(text(1)); }},
        {"exact tree size", [this] { return SFileSys::rsizeEx(text(1)); }},
        {"unique", [this] { return unique(); }},
        {"free name",
         [this] { return SFileSys::exists(SFileSys::getUniqueFilename(text(1), "", "", false, 0)); }},
        {"unique directory",
         [this] { return SFileSys::isDir(SFileSys::getUniqueDirname(text(1), "d", true, 0)); }},
        // a file: its key in the case comes first
        {"open", [this] { file().open(text(2), mode(3), 0, SFile::denyNothing); }},
        {"hold", [this] { file().open(text(2), mode(3), 0, static_cast<int>(number(4))); }},
        {"reopen", [this] { file().open(mode(2), 0, SFile::denyNothing); }},
        {"close", [this] { file().close(); }},
        {"drop", [this] { files_.erase(arguments_[1]); }},
        {"is open", [this] { return file().isOpen(); }},
        {"name", [this] { return file().name(); }},
        {"flush", [this] { file().flush(); }},
        {"bytes", [this] { return read(); }},
        {"put", [this] { return file().write(text(2).getString(), text(2).getLength()); }},
        {"line", [this] { return file().readLine(); }},
        {"two lines", [this] { return twoLines(); }},
        {"native line", [this] { return file().readLine(SFile::nativeCodePage); }},
        {"text", [this] { return file().readString(); }},
        {"native text", [this] { return file().readString(SFile::nativeCodePage); }},
        {"put text", [this] { return file().writeString(text(2)); }},
        {"put line", [this] { return file().writeNewLine(); }},
        {"lines", [this] { return lines(); }},
        {"seek", [this] { return file().seek(static_cast<int>(number(2)), static_cast<int>(number(3))); }},
        {"exact seek", [this] { return file().seekEx(static_cast<int>(number(2)), number(3)); }},
        {"end", [this] { return file().eof(); }},
        {"length", [this] { return file().size(); }},
        {"exact length", [this] { return file().sizeEx(); }},
        {"load", [this] { return load(); }},
        {"save", [this] { return save(); }},
    };
};

using Cp932FileSteps = FileSteps;
using Utf8FileSteps = FileSteps;

}  // namespace

TEST_F(FileSteps, GiveWhatTheyMust) {
    play("files/file_steps.txt");
    play("files/file_steps_1252.txt");
}

TEST_F(Cp932FileSteps, GiveWhatTheyMust) {
    play("files/file_steps_932.txt");
}

TEST_F(Utf8FileSteps, GiveWhatTheyMust) {
    play("files/file_steps.txt");
    play("files/file_steps_utf8.txt");
}
