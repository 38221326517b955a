#include "kkm/encoding.h"

#include <iconv.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace kkm {
namespace {

bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) == 0x80;
}

constexpr std::size_t kLongestLetter = 4;

class Converter {
  public:
    Converter(const char* to, const char* from) : handle_(iconv_open(to, from)) {
        if (handle_ == Failed()) {
            throw std::runtime_error("this system cannot convert to code page 866 (iconv)");
        }
    }
    ~Converter() { iconv_close(handle_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Converts as far as it can; the letter that stops it stands at the new `from`.
    void Convert(char*& from, std::size_t& left, std::string& to) {
        std::size_t room = left * kLongestLetter;
        to.resize(to.size() + room);
        char* out = to.data() + to.size() - room;
        const bool stopped =
            iconv(handle_, &from, &left, &out, &room) == static_cast<std::size_t>(-1);
        to.resize(to.size() - room);
        if (stopped && errno != EILSEQ && errno != EINVAL) {
            throw std::system_error(errno, std::generic_category(), "iconv");
        }
    }

  private:
    static iconv_t Failed() { return reinterpret_cast<iconv_t>(-1); }

    iconv_t handle_;
};

}  // namespace

RegisterText ToRegisterText(const std::string& utf8) {
    Converter converter("CP866", "UTF-8");
    RegisterText text;
    std::string source = utf8;  // iconv takes a pointer to bytes that may be changed
    char* from = source.data();
    for (std::size_t left = source.size(); left != 0;) {
        converter.Convert(from, left, text.bytes);
        if (left == 0) {
            break;
        }
        std::size_t length = 1;
        while (length < left && IsContinuation(from[length])) {
            ++length;
        }
        const std::string letter(from, length);
        if (std::find(text.lost.begin(), text.lost.end(), letter) == text.lost.end()) {
            text.lost.push_back(letter);
        }
        text.bytes += '?';
        from += length;
        left -= length;
    }
    return text;
}

std::string FromRegisterText(const std::string& bytes) {
    Converter converter("UTF-8", "CP866");
    std::string source = bytes;
    for (char& c : source) {
        c = static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
    std::string text;
    char* from = source.data();
    std::size_t left = source.size();
    converter.Convert(from, left, text);  // every byte is a letter of this page
    return text;
}

}  // namespace kkm
