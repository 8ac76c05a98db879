#pragma once

#include <string>

namespace tarntest {

inline std::string FromHex(const std::string& hex) {
    std::string bytes;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return bytes;
}

inline unsigned char* Data(std::string& bytes) {
    return reinterpret_cast<unsigned char*>(bytes.data());
}

inline unsigned Size(const std::string& bytes) {
    return static_cast<unsigned>(bytes.size());
}

inline std::string ToHex(const unsigned char* bytes, std::size_t count) {
    std::string hex;
    for (std::size_t i = 0; i < 2 * count; ++i)
        hex += "0123456789abcdef"[bytes[i / 2] >> (i % 2 == 0 ? 4 : 0) & 0xF];
    return hex;
}

}  // namespace tarntest
