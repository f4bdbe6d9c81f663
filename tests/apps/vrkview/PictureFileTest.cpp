#include "files/PictureFile.h"

#include "support/TempFolder.h"

#include <QColorSpace>
#include <QImage>

#include <gmock/gmock.h>

#include <random>
#include <stdexcept>
#include <vector>

namespace vrkview::test {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

/// With rows that do not end where Qt begins the next one.
QImage picture()
{
    std::mt19937 random(3);
    QImage made(33, 21, QImage::Format_RGB888);
    for (int y = 0; y < made.height(); ++y)
        for (int x = 0; x < made.width(); ++x)
            made.setPixel(x, y, qRgb(static_cast<int>(random() % 256), x, 10 * y));
    return made;
}

QImage readPicture(const std::filesystem::path& file)
{
    QImage read = QImage(QString::fromStdString(file.string())).convertToFormat(QImage::Format_RGB888);
    read.setColorSpace({}); // the file says that it is sRGB, as all pictures without a word of it are
    return read;
}

TEST(PictureFileTest, PictureIsReadBackAsItWas)
{
    const vrk::test::TempFolder folder;
    const std::filesystem::path file = folder / "picture.png";

    savePicture(picture(), file);

    EXPECT_TRUE(readPicture(file) == picture());
}

TEST(PictureFileTest, PictureInAnotherFormatHasTheSameColours)
{
    const vrk::test::TempFolder folder;
    const std::filesystem::path file = folder / "picture.png";

    savePicture(picture().convertToFormat(QImage::Format_ARGB32), file);

    EXPECT_TRUE(readPicture(file) == picture());
}

TEST(PictureFileTest, HalfOfAPictureHasTheMeansOfFour)
{
    // Two rows and six columns; a seventh has no other beside it.
    const std::vector<std::uint8_t> upper = {0,   10, 20, 4, 10, 23, 255, 255, 255, 255, 255,
                                             255, 1,  0,  0, 0,  1,  0,   9,   9,   9};
    const std::vector<std::uint8_t> lower = {8,   10, 20, 4, 10, 20, 255, 255, 255, 255, 255,
                                             254, 0,  1,  1, 1,  1,  2,   9,   9,   9};
    std::vector<std::uint8_t> pixels = upper;
    pixels.insert(pixels.end(), lower.begin(), lower.end());

    const QImage half = halved(pixels, 7, 2);

    ASSERT_EQ(half.size(), QSize(3, 1));
    EXPECT_EQ(half.pixel(0, 0), qRgb(4, 10, 20)); // 83 of the blue, rounded down
    EXPECT_EQ(half.pixel(1, 0), qRgb(255, 255, 254));
    EXPECT_EQ(half.pixel(2, 0), qRgb(0, 0, 0));
}

TEST(PictureFileTest, HalfOfAPictureIsThatOfQtsSmoothScalingButForItsRounding)
{
    constexpr int width = 46, height = 30;
    std::mt19937 random(5);
    std::vector<std::uint8_t> pixels(std::size_t{3} * width * height);
    for (std::uint8_t& value : pixels)
        value = static_cast<std::uint8_t>(random() >> 24);

    const QImage half = halved(pixels, width, height);

    const QImage whole(pixels.data(), width, height, 3 * width, QImage::Format_RGB888);
    const QImage wanted = whole.scaled(width / 2, height / 2, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    for (int y = 0; y < half.height(); ++y)
        for (int i = 0; i < 3 * half.width(); ++i)
            ASSERT_NEAR(half.constScanLine(y)[i], wanted.constScanLine(y)[i], 2) << i << ' ' << y;
}

TEST(PictureFileTest, OtherPictureOfThatNameIsReplaced)
{
    const vrk::test::TempFolder folder;
    const std::filesystem::path file = folder / "picture.png";
    savePicture(picture().scaled(400, 300), file);

    savePicture(picture(), file);

    EXPECT_EQ(QImage(QString::fromStdString(file.string())).size(), picture().size());
}

TEST(PictureFileTest, FileThatCannotBeWrittenIsTold)
{
    const vrk::test::TempFolder folder;
    const std::filesystem::path file = folder / "none" / "picture.png";

    EXPECT_THAT([&] { savePicture(picture(), file); },
                ThrowsMessage<std::runtime_error>(StrEq(file.string() + ": the picture cannot be written")));
    EXPECT_THAT([&] { savePicture(QImage(), folder / "picture.png"); }, testing::Throws<std::runtime_error>());
}

TEST(PictureFileTest, DiskThatIsFullIsTold)
{
    EXPECT_THAT([] { savePicture(picture().scaled(2000, 2000), "/dev/full"); }, testing::Throws<std::runtime_error>());
}

} // namespace
} // namespace vrkview::test
