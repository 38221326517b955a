#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace virtual_register {

// A picture of up to four colours, each with its opacity.
class Picture {
  public:
    struct Colour {
        std::uint8_t red;
        std::uint8_t green;
        std::uint8_t blue;
        std::uint8_t opacity;
    };
    static constexpr std::size_t kColours = 4;

    // All of it in the first colour.
    Picture(std::size_t width, std::size_t height, const std::array<Colour, kColours>& colours)
        : width_(width), height_(height), colours_(colours), dots_(width * height) {}

    std::size_t width() const { return width_; }
    std::size_t height() const { return height_; }
    // Outside the picture nothing is set.
    void set(std::size_t x, std::size_t y, std::uint8_t colour) {
        if (x < width_ && y < height_) {
            dots_[y * width_ + x] = colour;
        }
    }

    // The bytes of a PNG file. They are stored and not compressed: the pictures are small, and
    // nothing else here would need a library for it.
    std::string png() const;

  private:
    std::string rows() const;

    std::size_t width_;
    std::size_t height_;
    std::array<Colour, kColours> colours_;
    std::vector<std::uint8_t> dots_;
};

}  // namespace virtual_register
