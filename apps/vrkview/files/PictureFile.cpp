#include "files/PictureFile.h"

#include <QImage>

#include <stdexcept>

namespace vrkview {

std::string pictureCannotBeWritten(const std::filesystem::path& file)
{
    return file.string() + ": the picture cannot be written";
}

void savePicture(const QImage& picture, const std::filesystem::path& file)
{
    if (!picture.save(QString::fromStdString(file.string()), "PNG"))
        throw std::runtime_error(pictureCannotBeWritten(file));
}

} // namespace vrkview
