#pragma once

#include <memory>

struct mpv_render_context;
struct mpv_render_param;

namespace zelvano {

class MpvCore;

/// Where mpv draws. Render thread, with the OpenGL context of its creation current if there is one.
class MpvCanvas
{
public:
    /// Null while mpv draws elsewhere, or cannot draw in this way.
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
