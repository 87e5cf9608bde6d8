// SPDX-License-Identifier: MIT
// The bitmaps against the panel's fixed rectangles: sizes, seams, and scales that tell the truth.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <png.h>
#include <string>
#include <vector>

namespace {

struct Pixel {
    int red, green, blue, alpha;

    bool operator==(const Pixel& other) const = default;
    [[nodiscard]] int Light() const { return red + green + blue; }
};

/// A decoded bitmap resource.
struct Bitmap {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> bytes;

    [[nodiscard]] Pixel At(int x, int y) const {
        const std::uint8_t* p = &bytes.at((static_cast<std::size_t>(y) * width + x) * 4);
        return {p[0], p[1], p[2], p[3]};
    }
};

Bitmap Load(int number) {
    const std::string path = std::string(VOCAFADE_RESOURCES) + "/" + std::to_string(number) + ".png";
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    Bitmap bitmap;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) {
        ADD_FAILURE() << path << ": " << image.message;
        return bitmap;
    }
    image.format = PNG_FORMAT_RGBA;
    bitmap.width = static_cast<int>(image.width);
    bitmap.height = static_cast<int>(image.height);
    bitmap.bytes.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, bitmap.bytes.data(), 0, nullptr) == 0) {
        ADD_FAILURE() << path << ": " << image.message;
    }
    return bitmap;
}

struct Size {
    int number, width, height;
};

constexpr int kFaderLefts[] = {48, 141, 229, 413};
constexpr int kFaderTop = 45;

/// Row of the panel on which a fader's index line stands for a normalised value.
int FaderRow(double normalised, int thumbHeight) {
    const int start = 133 - thumbHeight / 2;
    const int end = thumbHeight / 2;
    return kFaderTop +
           static_cast<int>(std::floor(start + (end - start) * std::log10(normalised * 9.0 + 1.0) + 0.5));
}

TEST(Bitmaps, FillThePanelsRectangles) {
    const Size sizes[] = {{3002, 25, 42},      {3003, 25, 42},  {3006, 16, 133},
                          {3011, 27, 38},      {3012, 27, 38},  {3014, 43, 32},
                          {3004, 34, 34 * 61}, {3008, 14, 133}, {3013, 43, 16}};
    for (const Size& size : sizes) {
        const Bitmap bitmap = Load(size.number);
        EXPECT_EQ(bitmap.width, size.width) << size.number;
        EXPECT_EQ(bitmap.height, size.height) << size.number;
    }
    for (const int spare : {3001, 3009, 3010}) {
        EXPECT_GT(Load(spare).width, 0) << spare;
    }
    const Bitmap plate = Load(3005);
    EXPECT_GE(plate.width, 450);
    EXPECT_GE(plate.height, 201);
    const Bitmap thumb = Load(3007);
    EXPECT_LE(1 + thumb.width, 16) << "the thumb is drawn at x = 1 in the track";
    EXPECT_EQ(thumb.height % 2, 1) << "an index line in the very middle needs an odd height";
}

TEST(Bitmaps, AreOpaqueButForTheThumb) {
    for (int number = 3001; number <= 3014; ++number) {
        if (number == 3007 || number == 3001 || number == 3009 || number == 3010) {
            continue;
        }
        const Bitmap bitmap = Load(number);
        int clear = 0;
        for (std::size_t i = 3; i < bitmap.bytes.size(); i += 4) {
            clear += bitmap.bytes[i] != 255 ? 1 : 0;
        }
        EXPECT_EQ(clear, 0) << number << ": controls are drawn over older ones";
    }
    // The row that the editor cuts off at the bottom of the travel carries nothing but shadow.
    const Bitmap thumb = Load(3007);
    for (int x = 0; x < thumb.width; ++x) {
        EXPECT_LT(thumb.At(x, thumb.height - 1).alpha, 128) << x;
    }
}

TEST(Bitmaps, JoinThePlateWithoutASeam) {
    const Bitmap plate = Load(3005);
    const Bitmap track = Load(3006);
    for (const int left : kFaderLefts) {
        for (int y = 0; y < track.height; ++y) {
            for (int x = 0; x < track.width; ++x) {
                ASSERT_EQ(track.At(x, y), plate.At(left + x, kFaderTop + y))
                    << left << ": " << x << ", " << y;
            }
        }
    }
    const Bitmap knob = Load(3004);
    for (int frame = 0; frame < 61; ++frame) {
        for (int i = 0; i < 34; ++i) {
            ASSERT_EQ(knob.At(i, frame * 34), plate.At(307 + i, 147)) << frame << ": " << i;
            ASSERT_EQ(knob.At(i, frame * 34 + 33), plate.At(307 + i, 180)) << frame << ": " << i;
            ASSERT_EQ(knob.At(0, frame * 34 + i), plate.At(307, 147 + i)) << frame << ": " << i;
            ASSERT_EQ(knob.At(33, frame * 34 + i), plate.At(340, 147 + i)) << frame << ": " << i;
        }
    }
    const Bitmap power = Load(3003);
    for (int x = 0; x < 25; ++x) {
        EXPECT_EQ(power.At(x, 0), plate.At(24 + x, 7)) << x;
        EXPECT_EQ(power.At(x, 21), plate.At(24 + x, 7)) << x;
    }
}

TEST(Bitmaps, StatesCanBeToldApart) {
    const auto differing = [](const Bitmap& a, int ay, const Bitmap& b, int by, int rows) {
        int count = 0;
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < a.width; ++x) {
                count += std::abs(a.At(x, ay + y).Light() - b.At(x, by + y).Light()) > 60 ? 1 : 0;
            }
        }
        return count;
    };
    const Bitmap off = Load(3002);
    const Bitmap on = Load(3003);
    const Bitmap closed = Load(3012);
    const Bitmap open = Load(3011);
    const Bitmap edited = Load(3014);
    EXPECT_GT(differing(off, 0, on, 0, 21), 20);
    EXPECT_GT(differing(off, 21, on, 21, 21), 20);
    EXPECT_GT(differing(on, 0, on, 21, 21), 20) << "held looks like released";
    EXPECT_GT(differing(closed, 0, open, 0, 19), 20);
    EXPECT_GT(differing(closed, 0, closed, 19, 19), 20) << "held looks like released";
    EXPECT_GT(differing(edited, 0, edited, 16, 16), 60);
}

TEST(Bitmaps, OnShinesAndOffDoesNot) {
    const auto strongestGreen = [](const Bitmap& bitmap) {
        int strongest = 0;
        for (int y = 0; y < bitmap.height / 2; ++y) {
            for (int x = 0; x < bitmap.width; ++x) {
                strongest = std::max(strongest, bitmap.At(x, y).green - bitmap.At(x, y).red);
            }
        }
        return strongest;
    };
    EXPECT_GT(strongestGreen(Load(3003)), 80);
    EXPECT_LT(strongestGreen(Load(3002)), 20);
}

TEST(Bitmaps, ReadOutsAreLightAndClear) {
    const Bitmap plate = Load(3005);
    const int rectangles[][4] = {{14, 184, 48, 200},
                                 {414, 184, 448, 200},
                                 {125, 184, 174, 200},
                                 {213, 184, 262, 200},
                                 {300, 184, 349, 200}};
    for (const auto& r : rectangles) {
        // The outermost pixels belong to the rounded frame.
        for (int y = r[1] + 1; y < r[3] - 1; ++y) {
            for (int x = r[0] + 1; x < r[2] - 1; ++x) {
                ASSERT_GT(plate.At(x, y).Light(), 3 * 220) << "text of grey 72 at " << x << ", " << y;
            }
        }
    }
}

TEST(Bitmaps, EveryKnobFramePointsAtItsAngle) {
    const Bitmap knob = Load(3004);
    for (int frame = 0; frame < 61; ++frame) {
        double x = 0;
        double y = 0;
        for (int row = 0; row < 34; ++row) {
            for (int column = 0; column < 34; ++column) {
                const double dx = column + 0.5 - 17;
                const double dy = row + 0.5 - 17;
                if (std::hypot(dx, dy) < 13 && knob.At(column, frame * 34 + row).Light() > 450) {
                    x += dx;
                    y += dy;
                }
            }
        }
        ASSERT_GT(std::hypot(x, y), 50) << "no pointer in frame " << frame;
        const double angle = std::fmod(std::atan2(-x, y) * 180.0 / M_PI + 360.0, 360.0);
        EXPECT_NEAR(angle, 30.0 + 5.0 * frame, 2.5) << "frame " << frame;
    }
}

TEST(Bitmaps, ScalesMeetTheFadersIndexLine) {
    const Bitmap plate = Load(3005);
    const int thumbHeight = Load(3007).height;
    // A graduation is darker than the plate three rows above and below it, at the end next to the fader.
    const auto expectMark = [&](int x, int row, const std::string& name) {
        const int mark = plate.At(x, row).Light();
        EXPECT_LT(mark, plate.At(x, row - 1).Light() - 100) << name;
        EXPECT_LT(mark, plate.At(x, row + 1).Light() - 100) << name;
    };
    for (const int decibels : {6, 3, 0, -3, -6, -12, -18, -24}) {
        const double gain = std::exp2(decibels / 6.0);
        expectMark(409, FaderRow((gain - 0.001) / 1.999, thumbHeight), "Output " + std::to_string(decibels));
        if (decibels <= 0) {
            expectMark(67, FaderRow((gain - 0.001) / 0.999, thumbHeight),
                       "Input " + std::to_string(decibels));
        }
    }
    for (const int hertz : {20, 500, 1000, 2000, 3000, 5000, 7000, 10000, 15000, 20000}) {
        const int row = FaderRow((hertz - 20.0) / 19980.0, thumbHeight);
        expectMark(161, row, "LoFreq " + std::to_string(hertz));
        expectMark(225, row, "HiFreq " + std::to_string(hertz));
    }
    for (int decibels = 6; decibels >= -36; decibels -= 6) {
        expectMark(24, kFaderTop + 19 - 3 * decibels, "input meter " + std::to_string(decibels));
        expectMark(452, kFaderTop + 19 - 3 * decibels, "output meter " + std::to_string(decibels));
    }
    const Bitmap thumb = Load(3007);
    const int middle = thumb.height / 2;
    EXPECT_GT(thumb.At(7, middle).Light(), 650) << "the index line is the thumb's middle row";
}

TEST(Bitmaps, MetersShineFromGreenToRed) {
    const Bitmap meter = Load(3008);
    const int half = meter.width / 2;
    for (int decibels = 6; decibels > -38; --decibels) {
        const int row = 19 - 3 * decibels;
        EXPECT_GT(meter.At(half + 3, row).Light(), 3 * meter.At(3, row).Light()) << decibels << " dB";
        const Pixel lit = meter.At(half + 3, row + 1);
        if (decibels > 0) {
            EXPECT_GT(lit.red, 2 * lit.green) << decibels << " dB";
        } else if (decibels <= -20) {
            EXPECT_GT(lit.green, 2 * lit.red) << decibels << " dB";
        }
    }
}

} // namespace
