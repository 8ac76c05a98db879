#include "tracelog/context.h"

#include <cstring>
#include <new>

#include "tracelog/effective.h"
#include "tracelog/logline.h"
#include "waiting/waiting.h"

namespace TraceLog400 {
namespace detail {
namespace {

constexpr std::size_t kMaxVariables = 64;
constexpr std::size_t kMaxTextOfVariable = 1024;
constexpr std::size_t kMaxContextText = 8 * 1024;
constexpr char kHex[] = "0123456789ABCDEF";

/// A class of this module: code that makes a std::bad_alloc itself refers to data of another one, and has to be changed when
/// it is loaded.
struct OutOfMemory : std::bad_alloc {
    const char* what() const noexcept override { return "bad allocation"; }
};

void WINAPI FreeContext(void* context) {
    delete static_cast<ThreadContext*>(context);
}

/// A slot for each thread whose content is freed with the thread: thread-local objects with destructors lose
/// their memory before they are destroyed on this platform.
class Slot {
  public:
    Slot() : index_(FlsAlloc(&FreeContext)) {}
    // While the process ends, the contexts of threads that were ended go with it.
    ~Slot() {
        if (!waiting::ProcessIsEnding()) FlsFree(index_);
    }
    bool isUsable() const { return index_ != FLS_OUT_OF_INDEXES; }
    ThreadContext* get() const { return static_cast<ThreadContext*>(FlsGetValue(index_)); }
    void set(ThreadContext* context) const { FlsSetValue(index_, context); }

  private:
    DWORD index_;
};
const Slot slot;

// These would end or forge a name, a value or a line.
bool NeedsEscape(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7F' || std::strchr("%;=[]", c) != nullptr;
}

// Line separators beyond ASCII are escaped, too, because the text stands in lines; a reader takes them both
// ways.
void AppendEscaped(std::string& out, const std::string& text) {
    std::size_t control = 0;  // bytes left of such a character
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (control == 0) control = ControlBytes(text.data() + i, text.size() - i);
        if (control == 0 && !NeedsEscape(c)) {
            out += c;
            continue;
        }
        if (control != 0) --control;
        out += '%';
        out += kHex[static_cast<unsigned char>(c) >> 4];
        out += kHex[c & 0xF];
    }
}

int HexValue(char c) {
    const char* const found = c != '\0' ? std::strchr("0123456789ABCDEFabcdef", c) : nullptr;
    if (found == nullptr) return -1;
    const auto position = static_cast<int>(found - "0123456789ABCDEFabcdef");
    return position < 16 ? position : position - 6;
}

// False for a percent sign that two digits do not follow, and for bytes that the writer would have escaped.
bool Unescape(const std::string& text, std::string& out) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            if (NeedsEscape(text[i])) return false;
            out += text[i];
            continue;
        }
        const int high = i + 1 < text.size() ? HexValue(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) return false;
        out += static_cast<char>(high << 4 | low);
        i += 2;
    }
    return true;
}

bool ReadVariable(const std::string& text, Variable& variable) {
    const std::size_t equals = text.find('=');
    return equals != text.npos && equals != 0 && Unescape(text.substr(0, equals), variable.name) &&
           Unescape(text.substr(equals + 1), variable.value);
}

}  // namespace

void Request::set(const std::string& name, const std::string& value) {
    if (name.empty() || name.size() > kMaxTextOfVariable || value.size() > kMaxTextOfVariable) return;
    for (auto at = variables_.begin(); at != variables_.end(); ++at) {
        if (at->name != name) continue;
        if (value.empty()) {
            variables_.erase(at);
        } else {
            at->value = value;
        }
        return;
    }
    if (!value.empty() && variables_.size() < kMaxVariables) variables_.push_back({name, value});
}

const std::string* Request::find(const std::string& name) const {
    for (const Variable& variable : variables_) {
        if (variable.name == name) return &variable.value;
    }
    return nullptr;
}

std::string Request::toText() const {
    std::string text;
    for (const Variable& variable : variables_) {
        std::string piece = text.empty() ? "" : ";";
        AppendEscaped(piece, variable.name);
        piece += '=';
        AppendEscaped(piece, variable.value);
        if (text.size() + piece.size() <= kMaxContextText) text += piece;
    }
    return text;
}

void Request::takeText(const char* text) {
    if (text == nullptr || strnlen(text, kMaxContextText + 1) > kMaxContextText) return;
    const std::string whole(text);
    for (std::size_t start = 0; start < whole.size();) {
        const std::size_t end = std::min(whole.find(';', start), whole.size());
        Variable variable;
        if (ReadVariable(whole.substr(start, end - start), variable)) set(variable.name, variable.value);
        start = end + 1;
    }
}

ThreadContext* ThisThreadIfAny() {
    return slot.get();
}

ThreadContext& ThisThread() {
    ThreadContext* context = slot.get();
    if (context == nullptr) {
        if (!slot.isUsable()) throw OutOfMemory();
        context = new ThreadContext;
        slot.set(context);
    }
    return *context;
}

std::size_t WriteContext(char* out, std::size_t most) {
    const ThreadContext* const context = ThisThreadIfAny();
    if (context == nullptr) return 0;
    const std::string& text = context->inLines;
    const std::size_t bytes = WholeCharacters(text.c_str(), std::min(text.size(), most));
    std::memcpy(out, text.data(), bytes);
    return bytes;
}

}  // namespace detail

namespace Context {

void Updater::set(const char* name, const char* value) {
    if (name == nullptr) return;
    try {
        detail::ThreadContext& context = detail::ThisThread();
        context.request.set(name, value != nullptr ? value : "");
        context.requestChanged();
    } catch (const std::bad_alloc&) {
        return;  // what is too much is left out
    }
}

void Updater::clear() {
    detail::ThreadContext* const context = detail::ThisThreadIfAny();
    if (context == nullptr) return;
    context->request = detail::Request();
    context->inLines.clear();
}

bool Info::has() {
    const detail::ThreadContext* const context = detail::ThisThreadIfAny();
    return context != nullptr && (!context->request.isEmpty() || !context->putAside.empty());
}

bool Info::came_from_outside() {
    const detail::ThreadContext* const context = detail::ThisThreadIfAny();
    return context != nullptr && context->request.cameFromOutside;
}

bool Info::get(const char* name, TextTarget& out) {
    const detail::ThreadContext* const context = detail::ThisThreadIfAny();
    const std::string* const value =
        context != nullptr && name != nullptr ? context->request.find(name) : nullptr;
    if (value != nullptr) out.append(value->data(), value->size());
    return value != nullptr;
}

}  // namespace Context
}  // namespace TraceLog400
