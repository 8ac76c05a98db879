#include <new>
#include <string>
#include <vector>

#include "tracelog/effective.h"

namespace TraceLog400 {

// Directories and names are kept in lower case with one kind of slash.
struct ByFileLine::Files {
    struct File {
        std::string shown;  ///< as it was given
        std::string directory;
        std::string name;
        bool operator==(const File&) const = default;
    };
    bool isInverted = false;
    std::vector<File> files;
    bool operator==(const Files&) const = default;
};

namespace {

// Lower case and one kind of slash; directories without the last one.
std::string Normal(const std::string& path) {
    std::string normal(path);
    for (char& c : normal) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c == '\\') c = '/';
    }
    while (!normal.empty() && normal.back() == '/') normal.pop_back();
    return normal;
}

std::string Stem(const std::string& name) {
    return name.substr(0, name.rfind('.'));
}

bool SameName(const std::string& a, const std::string& b) {
    const bool bothHaveExtensions = a.find('.') != a.npos && b.find('.') != b.npos;
    return bothHaveExtensions ? a == b : Stem(a) == Stem(b);
}

bool IsIn(const std::string& directory, const std::string& wanted) {
    if (wanted.empty()) return true;
    if (directory.size() < wanted.size() ||
        directory.compare(directory.size() - wanted.size(), wanted.size(), wanted) != 0)
        return false;
    return directory.size() == wanted.size() || directory[directory.size() - wanted.size() - 1] == '/';
}

}  // namespace

static bool operator==(const ByFileLine& a, const ByFileLine& b) {
    return a.isSameAs(b);
}

static constinit detail::Published<ByFileLine> filterInEffect;

ByFileLine::ByFileLine() : files_(new Files) {}
ByFileLine::~ByFileLine() {
    delete files_;
}
ByFileLine::ByFileLine(const ByFileLine& other) : files_(new Files(*other.files_)) {}
ByFileLine& ByFileLine::operator=(const ByFileLine& other) {
    if (&other != this) *files_ = *other.files_;
    return *this;
}

void ByFileLine::set(const char* directory, const char* name) {
    const std::string inDirectory = directory != nullptr ? directory : "";
    const std::string file = name != nullptr ? name : "";
    files_->files.push_back({inDirectory + file, Normal(inDirectory), Normal(file)});
}

void ByFileLine::invert(bool on) {
    files_->isInverted = on;
}

bool ByFileLine::predicate(const char* file, int) const {
    if (files_->files.empty()) return true;
    if (file == nullptr) return files_->isInverted;
    const std::string path = Normal(file);
    const std::size_t slash = path.rfind('/');
    const std::string name = path.substr(slash + 1);
    const std::string directory = slash == path.npos ? std::string() : path.substr(0, slash);
    for (const Files::File& wanted : files_->files) {
        if (SameName(name, wanted.name) && IsIn(directory, wanted.directory)) return !files_->isInverted;
    }
    return files_->isInverted;
}

bool ByFileLine::isSameAs(const ByFileLine& other) const {
    return *files_ == *other.files_;
}

void ByFileLine::print(TextTarget& out) const {
    std::string text = files_->files.empty() ? "  all files"
                       : files_->isInverted  ? "  all files except:"
                                             : "";
    for (const Files::File& file : files_->files) text += "\n  " + file.shown;
    if (text[0] == '\n') text.erase(0, 1);
    out.append(text.data(), text.size());
}

// A filter costs a text or two a trace point that the mask lets through; without one it costs nothing.
bool detail::PassesFilter(const char* file, int line) {
    const ByFileLine* const filter = filterInEffect.get();
    if (filter == nullptr) return true;
    try {
        return filter->predicate(file, line);
    } catch (const std::bad_alloc&) {
        return true;
    }
}

bool EventInfo::passes_filter() const {
    return detail::PassesFilter(file, line);
}

void detail::PublishFilter(const ByFileLine& filter) {
    if (filter == ByFileLine()) {
        filterInEffect.publishNothing();
    } else {
        filterInEffect.publish(filter);
    }
}

void detail::RemoveFilter() {
    filterInEffect.publishNothing();
}

void detail::PrintFilter(TextTarget& out) {
    const ByFileLine* const filter = filterInEffect.get();
    (filter != nullptr ? *filter : ByFileLine()).print(out);
}

}  // namespace TraceLog400
