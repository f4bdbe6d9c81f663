#pragma once

#include <QImage>

#include <map>
#include <set>

namespace vrk::visual {
class OffscreenTarget;
class Visual;
} // namespace vrk::visual

namespace vrkview::test {

/// What the main camera sees, each visual that can be picked in one flat colour of its own. All else is hidden, clouds too:
/// a plain pick does not look at them.
///
/// Bodies are drawn as they always are, lines with their width and their lift over the faces that they lie on, and points as
/// squares in place of round marks. Thread: render thread.
class IdPicture {
public:
    /// @param target  the camera's, without samples. What the scene shows keeps the flat colours.
    /// @throws std::logic_error if something is drawn in another colour.
    explicit IdPicture(const vrk::visual::OffscreenTarget& target);

    int width() const { return image.width(); }
    int height() const { return image.height(); }
    /// What is drawn at a pixel; null for the background. Beyond the picture there is nothing.
    vrk::visual::Visual* at(int x, int y) const;
    /// Whether any pixel not farther than `reach` along either axis shows it; nothing, for null.
    bool isNear(int x, int y, const vrk::visual::Visual* visual, int reach) const;
    /// What is seen anywhere.
    std::set<vrk::visual::Visual*> seen() const;
    const QImage& picture() const { return image; }

private:
    void paint(vrk::visual::Visual& visual);

    QImage image;
    std::map<QRgb, vrk::visual::Visual*> visuals; // by their colours
};

} // namespace vrkview::test
