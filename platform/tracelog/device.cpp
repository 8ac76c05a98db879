#include "tracelog/device.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "tracelog/effective.h"
#include "tracelog/logline.h"

namespace TraceLog400 {
namespace detail {
namespace {

constexpr std::size_t kBufferBytes = 64 * 1024;
constexpr const char* kMainDevice = "main";

std::wstring FileNamePart(const std::string& device) {
    return device == kMainDevice ? std::wstring() : ToWide(device);
}

}  // namespace

FileDevice::FileDevice(const char* name) : name_(name), file_(FileNamePart(name_)) {
    waiting_.reserve(kBufferBytes);
}

void FileDevice::write(const char* line, std::size_t bytes) {
    const std::lock_guard<std::mutex> guard(mutex_);
    if (!isWriting.load(std::memory_order_relaxed))
        return;  // asked under the lock: after close nothing comes
    if (waiting_.size() + bytes + kLineEndBytes > kBufferBytes) drain();
    try {
        waiting_.append(line, bytes).append(kLineEnd, kLineEndBytes);
    } catch (const std::bad_alloc&) {
        file_.countLost("\n", 1);  // a line beyond the buffer's size, and no memory for it
    }
    if (!fileSettings.buffered.load(std::memory_order_relaxed)) drain();
    if (toStandardOutput) std::printf("%.*s\n", static_cast<int>(bytes), line);
}

void FileDevice::flush() {
    const std::lock_guard<std::mutex> guard(mutex_);
    drain();
}

void FileDevice::flushIfFree() {
    const std::unique_lock<std::mutex> guard(mutex_, std::try_to_lock);
    if (guard.owns_lock()) drain();
}

void FileDevice::drain() {
    try {
        if (!waiting_.empty()) file_.append(waiting_.data(), waiting_.size());
    } catch (const std::bad_alloc&) {
        file_.countLost(waiting_.data(), waiting_.size());
    }
    waiting_.clear();
}

std::string FileDevice::pathText() const {
    constexpr const char* kLongPath = "\\\\?\\";
    const std::lock_guard<std::mutex> guard(mutex_);
    std::string text = ToUtf8(file_.path());
    if (text.rfind(kLongPath, 0) == 0) text.erase(0, std::strlen(kLongPath));
    return text;
}

// The lock is not held while a target takes the text: it may log itself.
void FileDevice::path(TextTarget& out) const {
    const std::string text = pathText();
    out.append(text.data(), text.size());
}

void FileDevice::close() {
    const std::lock_guard<std::mutex> guard(mutex_);
    drain();
    file_.finish(!fileSettings.keep);
}

std::string FileDevice::description() const {
    const std::string path = pathText();
    const std::lock_guard<std::mutex> guard(mutex_);
    return "device " + name_ + ": " + path + ", " + std::to_string(file_.linesLost()) + " lines lost\n";
}

namespace {

/// All devices. The main one is made with the list. Those that are forgotten stay, because somebody may hold
/// them.
class Devices {
  public:
    Devices() { make(kMainDevice); }
    /// The end of the process, or of the module: what waits is written if that can be done without waiting.
    ~Devices() {
        for (const Entry& entry : all_) entry.device->flushIfFree();
    }
    FileDevice* find(const std::string& name) {
        const std::lock_guard<std::mutex> guard(mutex_);
        const Entry* const entry = findEntry(name);
        return entry != nullptr && entry->isKnown ? entry->device.get() : nullptr;
    }
    FileDevice* make(const std::string& name) {
        const std::lock_guard<std::mutex> guard(mutex_);
        Entry* entry = findEntry(name);
        if (entry == nullptr)
            entry = &all_.emplace_back(Entry{std::make_unique<FileDevice>(name.c_str()), true});
        entry->isKnown = true;
        return entry->device.get();
    }
    void closeAndForget() {
        const std::lock_guard<std::mutex> guard(mutex_);
        for (Entry& entry : all_) {
            entry.device->close();
            entry.isKnown = entry.device->name() == kMainDevice;
        }
    }
    template <class Action>
    void forEach(Action action) {
        const std::lock_guard<std::mutex> guard(mutex_);
        for (const Entry& entry : all_) {
            if (entry.isKnown) action(*entry.device);
        }
    }

  private:
    struct Entry {
        std::unique_ptr<FileDevice> device;
        bool isKnown;
    };
    Entry* findEntry(const std::string& name) {
        for (Entry& entry : all_) {
            if (entry.device->name() == name) return &entry;
        }
        return nullptr;
    }

    std::mutex mutex_;
    std::vector<Entry> all_;
};

Devices devices;

}  // namespace

Device& MainDevice() {
    static Device& main = *devices.find(kMainDevice);
    return main;
}

void FlushDevices() {
    devices.forEach([](FileDevice& device) { device.flush(); });
}

void PrintDevices(TextTarget& out) {
    std::string text;
    devices.forEach([&text](FileDevice& device) { text += device.description(); });
    out.append(text.data(), text.size());
}

}  // namespace detail

DeviceAdmin& DeviceAdmin::get() {
    static DeviceAdmin admin;
    return admin;
}

Device* DeviceAdmin::device(const char* name) {
    return name != nullptr ? detail::devices.find(name) : nullptr;
}

Device* DeviceAdmin::create(const DeviceInfo& info) {
    return info.name != nullptr ? detail::devices.make(info.name) : nullptr;
}

void DeviceAdmin::close_all() {
    detail::isWriting = false;
    detail::toStandardOutput = false;
    detail::devices.closeAndForget();
    EvalConfig masks;
    masks.assign_mask("cw");
    masks.assign_filter(ByFileLine());
    masks.apply();
}

}  // namespace TraceLog400
