#include "tracelog/device.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "console/console.h"
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

void PrintLine(const char* line, std::size_t bytes) {
    console::Write(stdout, line, bytes, CP_UTF8);
    console::Write(stdout, "\n", 1, CP_UTF8);
}

}  // namespace

FileDevice::FileDevice(const char* name) : name_(name), file_(FileNamePart(name_)) {
    waiting_.reserve(kBufferBytes);
}

void FileDevice::write(const char* line, std::size_t bytes) {
    const waiting::Guard guard(lock_);
    if (!isWriting.load(std::memory_order_relaxed))
        return;  // asked under the lock: after close nothing comes
    if (!guard.holds()) return writeAside(line, bytes);
    add(line, bytes);
    if (!fileSettings.buffered.load(std::memory_order_relaxed)) drain();
    if (toStandardOutput) PrintLine(line, bytes);
}

void FileDevice::add(const char* line, std::size_t bytes) {
    if (waiting_.size() + bytes + kLineEndBytes > kBufferBytes) drain();
    try {
        waiting_.append(line, bytes).append(kLineEnd, kLineEndBytes);
    } catch (const std::bad_alloc&) {
        file_.countLost("\n", 1);  // a line beyond the buffer's size, and no memory for it
    }
}

// A thread was ended while it was at the file and at the lines that wait: they are left as they are.
void FileDevice::writeAside(const char* line, std::size_t bytes) const {
    try {
        LogFile file(FileNamePart(name_));
        const std::string whole = std::string(line, bytes).append(kLineEnd, kLineEndBytes);
        file.append(whole.data(), whole.size());
    } catch (const std::bad_alloc&) {
        return;
    }
}

void FileDevice::flush() {
    const waiting::Guard guard(lock_);
    if (guard.holds()) drain();
}

void FileDevice::finishIfFree() {
    if (!lock_.takeIfFree()) return;
    drain();
    if (isWriting) file_.tellLoss();
    lock_.giveBack();
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
    std::string text = ToUtf8(PathOfLog(FileNamePart(name_)));
    if (text.rfind(kLongPath, 0) == 0) text.erase(0, std::strlen(kLongPath));
    return text;
}

void FileDevice::path(TextTarget& out) const {
    const std::string text = pathText();
    out.append(text.data(), text.size());
}

void FileDevice::close() {
    const waiting::Guard guard(lock_);
    if (!guard.holds()) return;
    drain();
    file_.finish(!fileSettings.keep);
}

std::string FileDevice::description() const {
    const std::string path = pathText();
    const waiting::Guard guard(lock_);
    return "device " + name_ + ": " + path + ", " + std::to_string(file_.linesLost()) + " lines lost\n";
}

namespace {

/// All devices. Those that are forgotten stay, because somebody may hold them. Where an ended thread holds
/// the list, only the main device is left.
class Devices {
  public:
    FileDevice& main() { return main_; }
    FileDevice* find(const std::string& name) {
        if (name == kMainDevice) return &main_;
        const waiting::Guard guard(lock_);
        const Entry* const entry = guard.holds() ? findEntry(name) : nullptr;
        return entry != nullptr && entry->isKnown ? entry->device.get() : nullptr;
    }
    FileDevice* make(const std::string& name) {
        const waiting::Guard guard(lock_);
        if (name == kMainDevice || !guard.holds()) return &main_;
        Entry* entry = findEntry(name);
        if (entry == nullptr)
            entry = &others_.emplace_back(Entry{std::make_unique<FileDevice>(name.c_str()), true});
        entry->isKnown = true;
        return entry->device.get();
    }
    void closeAndForget() {
        const waiting::Guard guard(lock_);
        main_.close();
        if (!guard.holds()) return;
        for (Entry& entry : others_) {
            entry.device->close();
            entry.isKnown = false;
        }
    }
    template <class Action>
    void forEach(Action action) {
        const waiting::Guard guard(lock_);
        action(main_);
        if (!guard.holds()) return;
        for (const Entry& entry : others_) {
            if (entry.isKnown) action(*entry.device);
        }
    }
    void finishIfFree() {
        main_.finishIfFree();
        if (!lock_.takeIfFree()) return;
        for (const Entry& entry : others_) entry.device->finishIfFree();
        lock_.giveBack();
    }

  private:
    struct Entry {
        std::unique_ptr<FileDevice> device;
        bool isKnown;
    };
    Entry* findEntry(const std::string& name) {
        for (Entry& entry : others_) {
            if (entry.device->name() == name) return &entry;
        }
        return nullptr;
    }

    FileDevice main_{kMainDevice};
    waiting::Lock lock_;  ///< guards the rest
    std::vector<Entry> others_;
};

/// The devices outlive the static objects of all who log, and are freed only where nobody is left to do so:
/// when the module is unloaded from a process that goes on.
class DevicesOfProcess {
  public:
    ~DevicesOfProcess() {
        devices_->finishIfFree();
        if (!waiting::ProcessIsEnding()) delete devices_;
    }
    Devices& operator*() const { return *devices_; }

  private:
    Devices* devices_ = new Devices;
};
const DevicesOfProcess devicesOfProcess;

Devices& TheDevices() {
    return *devicesOfProcess;
}

}  // namespace

Device& MainDevice() {
    return TheDevices().main();
}

void FlushDevices() {
    TheDevices().forEach([](FileDevice& device) { device.flush(); });
}

void PrintDevices(TextTarget& out) {
    std::string text;
    TheDevices().forEach([&text](FileDevice& device) { text += device.description(); });
    out.append(text.data(), text.size());
}

}  // namespace detail

DeviceAdmin& DeviceAdmin::get() {
    static DeviceAdmin admin;
    return admin;
}

Device* DeviceAdmin::device(const char* name) {
    return name != nullptr ? detail::TheDevices().find(name) : nullptr;
}

Device* DeviceAdmin::create(const DeviceInfo& info) {
    return info.name != nullptr ? detail::TheDevices().make(info.name) : nullptr;
}

void DeviceAdmin::close_all() noexcept {
    detail::isWriting = false;
    detail::toStandardOutput = false;
    detail::TheDevices().closeAndForget();
    detail::ResetMask();
    detail::RemoveFilter();
}

}  // namespace TraceLog400
