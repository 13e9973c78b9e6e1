#pragma once

#include <memory>

struct mpv_render_context;
struct mpv_render_param;

namespace zelvano {

class MpvCore;

/// A render context of mpv. Use it on the render thread. One that draws with OpenGL needs the context of its creation
/// to be current.
class MpvCanvas
{
public:
    /// Null while mpv has another canvas, and when it cannot draw with these parameters.
    static std::unique_ptr<MpvCanvas> create(const std::shared_ptr<MpvCore> &core, mpv_render_param *parameters);
    ~MpvCanvas();
    MpvCanvas(const MpvCanvas &) = delete;
    MpvCanvas &operator=(const MpvCanvas &) = delete;

    void draw(mpv_render_param *target);

private:
    MpvCanvas(const std::shared_ptr<MpvCore> &core, mpv_render_context *context);

    const std::shared_ptr<MpvCore> m_core;
    mpv_render_context *const m_context;
};

} // namespace zelvano
