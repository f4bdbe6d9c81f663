#pragma once

#include "scene/math/Color.h"
#include "scene/math/Vec.h"
#include "visual/SlotBatch.h"
#include "visual/text/GlyphAtlas.h"

#include <OgreMaterial.h>
#include <OgreMatrix4.h>

#include <string>
#include <vector>

namespace vrk::visual {

/// Texts at places of the scene, each on a ground of its own, and round marks. They face the viewer, keep their size on the
/// screen, lie over the bodies and are drawn in one batch.
///
/// A text that would cover one that comes first is left out, so that what is seen can be read: first come those that are
/// told to, then the nearer ones. Of marks that lie on each other one is drawn.
///
/// Sizes are as those of lines: pixels of a picture of up to 1080 rows; a finer one, or one whose pixels are told to be
/// finer, has as much larger ones. The letters are drawn anew for the size, so they are never scaled.
///
/// Owner: the visual that attaches it. Thread: render thread.
class LabelBatch : public SlotBatch {
public:
    struct Colors {
        rob::Colorf text;
        rob::Colorf ground;
        rob::Colorf rim;
    };
    struct Label {
        rob::Posf place;  ///< of its middle, in the frame of the node
        std::string text; ///< UTF-8; lines end with "\n". Without any there is no label
        std::vector<rob::Posf> marks;
        Colors colors;
        bool comesFirst = false;
    };
    /// In pixels of the picture; 0 for one without text.
    struct Extent {
        float width = 0;
        float height = 0;
    };

    LabelBatch();
    ~LabelBatch() override;

    /// New ones are empty.
    void setCount(std::size_t count);
    void set(std::size_t index, Label label);
    const Label& get(std::size_t index) const { return labels.at(index); }
    Extent extentOf(std::size_t index) const { return layouts.at(index).extent; }
    /// In the last picture.
    bool isTextSeen(std::size_t index) const { return layouts.at(index).isSeen; }

    /// How many pixels of the picture the user sees as one: of a dense screen, or of a picture that is made smaller.
    void setPixelRatio(float ratio) { pixelRatio = ratio; }

    void _notifyCurrentCamera(Ogre::Camera* camera) override;
    void _updateRenderQueue(Ogre::RenderQueue* queue) override;

private:
    struct Vertex;
    struct Box;
    struct Layout {
        Extent extent;
        std::uint32_t textQuads = 0; // which follow those of the marks
        bool isSeen = false;
    };
    struct Placed {
        std::size_t index;
        float x, y, depth; // pixels from the middle of the picture, and from the near plane on
    };

    void fit(float finer);
    std::vector<Placed> placedTexts() const;
    void chooseTexts();
    void chooseMarks();
    void writeIndices();
    void build(std::size_t index);
    void addMark(const Label& label, const rob::Posf& place, std::vector<Vertex>& vertices) const;
    void addText(const Label& label, const std::vector<std::u32string>& lines, std::vector<Vertex>& vertices);
    int widthOf(const std::u32string& line);

    GlyphAtlas atlas;
    float pixelRatio = 1;
    float fineness = 1; // the present picture's
    std::vector<Label> labels;
    std::vector<Layout> layouts;
    std::vector<std::uint32_t> shownMarks; // the first vertices of those that are drawn, in their order
    bool hasChanged = true;                // since texts and marks were chosen
    Ogre::Matrix4 toClip;
    Ogre::Matrix4 chosenFor; // the same, as they were chosen for it
    float halfWidth = 0;     // of the picture, in pixels
    float halfHeight = 0;
    std::size_t indexCapacity = 0;
    Ogre::MaterialPtr material; // with the texture of these letters
    const Ogre::Texture* shownTexture = nullptr;
};

} // namespace vrk::visual
