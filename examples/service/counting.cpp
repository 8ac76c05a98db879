#include "counting.h"

#include "tarnlib/pathparts.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/straceobj.h"
#include "tarnlib/swordcursor.h"

namespace {

class Claim {
  public:
    Claim(Claims& claims, const SAnsiString& name)
        : claims_(claims), name_(name), isTaken_(claims.take(name)) {}
    ~Claim() {
        if (isTaken_) claims_.giveBack(name_);
    }
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    explicit operator bool() const { return isTaken_; }

  private:
    Claims& claims_;
    const SAnsiString name_;
    const bool isTaken_;
};

std::uint32_t CountWords(const SAnsiString& path) {
    SFile file(path, SFile::readOnly | SFile::sequential, SFile::readWriteMask, SFile::denyNothing);
    std::uint32_t count = 0;
    while (!file.eof()) {
        const SAnsiString line = file.readLine();
        for (SWordCursor word(line, " \t"); word.next();) ++count;
    }
    return count;
}

// A result appears when it is whole.
void WriteResult(const SAnsiString& path, std::uint32_t count) {
    const SAnsiString half = path + ".half";
    SFile file(half, SFile::writeOnly | SFile::truncate, SFile::readWriteMask, SFile::denyNothing);
    SAnsiString text;
    text << count << "\r\n";
    file.writeString(text);
    file.close();
    SFileSys::replaceFile(half, path);
}

void Count(const Settings& settings, const SAnsiString& name, const SAnsiString& path) {
    const std::uint32_t count = CountWords(path);
    WriteResult(MakePath(settings.outbox, name + ".count"), count);
    SFileSys::remove(path);  // last: whoever is killed before counts it once more
    TARN_TRACE(6, "%1 has %2 words", name, count);
}

}  // namespace

bool Claims::take(const SAnsiString& name) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return names_.Insert(name);
}

void Claims::giveBack(const SAnsiString& name) {
    const std::lock_guard<std::mutex> lock(mutex_);
    names_.Remove(name);
}

bool CountOne(const Settings& settings, Claims& claims) {
    SIArray<FileProp> waiting;
    SFileSys::listing(settings.inbox, "*.txt", waiting);
    for (const FileProp& entry : waiting) {
        const SAnsiString path = MakePath(settings.inbox, entry.name);
        const Claim claim(claims, entry.name);
        // Another worker may have finished it since the listing.
        if (!claim || !SFileSys::isFile(path)) continue;
        try {
            Count(settings, entry.name, path);
        } catch (...) {
            SFileSys::renameFile(path, path + ".failed");
            throw;
        }
        return true;
    }
    return false;
}
