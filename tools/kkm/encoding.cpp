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

class Converter {
  public:
    Converter() : handle_(iconv_open("CP866", "UTF-8")) {
        if (handle_ == Failed()) {
            throw std::runtime_error("this system cannot convert to code page 866 (iconv)");
        }
    }
    ~Converter() { iconv_close(handle_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Converts as far as it can; the letter that stops it stands at the new `from`.
    void Convert(char*& from, std::size_t& left, std::string& to) {
        std::size_t room = left;  // one byte for a letter of one byte or more
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
    Converter converter;
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

}  // namespace kkm
