#pragma once

#include <utility>
#include <vector>

namespace Ogre {
class Viewport;
} // namespace Ogre

namespace vrk::visual {

/// What adds something to the pictures of cameras, and so must know into which viewports they draw.
class ViewportUser {
public:
    virtual ~ViewportUser() = default;

    /// A camera draws into the viewport from now on.
    /// @param isMain  whether it is the scene's own camera.
    virtual void serve(Ogre::Viewport& viewport, bool isMain) = 0;
    /// It does no more, and the viewport may die.
    virtual void forget(Ogre::Viewport& viewport) = 0;
};

/// Tells those who were added of the viewports of cameras.
///
/// Owner: the scene's records; it owns none of the users. Thread: render thread.
class ViewportUsers {
public:
    void add(ViewportUser& user) { users.push_back(&user); }
    void serve(Ogre::Viewport& viewport, bool isMain) const
    {
        for (ViewportUser* user : users)
            user->serve(viewport, isMain);
    }
    void forget(Ogre::Viewport& viewport) const
    {
        for (ViewportUser* user : users)
            user->forget(viewport);
    }

private:
    std::vector<ViewportUser*> users;
};

} // namespace vrk::visual
