#pragma once

namespace TarnLibA500 {

/// Reads a real without regard to the locale; NeutralString::ToNumber tells the rules. Instances: double and
/// float.
template <class T>
bool NeutralStringToRealIterator(const char* first, const char* last, T& out);

/// The same for a whole string.
template <class String, class T>
bool NeutralStringToReal(const String& text, T& out) {
    return NeutralStringToRealIterator(text.getString(), text.end().getPtr(), out);
}

}  // namespace TarnLibA500
