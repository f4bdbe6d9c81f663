#include "files/PictureFile.h"

#include "support/TempFolder.h"

#include <QColorSpace>
#include <QImage>

#include <gmock/gmock.h>

#include <random>
#include <stdexcept>

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
