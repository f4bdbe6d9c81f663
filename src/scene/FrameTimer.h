#pragma once

#include <OgreFrameListener.h>

#include <cstdint>

namespace vrk::visual {

/// Measures each frame and raises `frameTicked` with its milliseconds at its end. Thread: render thread.
class FrameTimer : public Ogre::FrameListener {
public:
    bool frameStarted(const Ogre::FrameEvent& event) override;
    bool frameEnded(const Ogre::FrameEvent& event) override;

private:
    double lastFrameMs = 0;
    std::int64_t frameStart = 0; // nanoseconds on the steady clock
};

} // namespace vrk::visual
