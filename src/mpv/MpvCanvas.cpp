#include "MpvCanvas.h"

#include "MpvCore.h"

#include <array>

#include <mpv/client.h>
#include <mpv/render.h>

namespace zelvano {

std::unique_ptr<MpvCanvas> MpvCanvas::create(const std::shared_ptr<MpvCore> &core, mpv_render_param *parameters)
{
    mpv_render_context *context = nullptr;
    if (!core->handle() || mpv_render_context_create(&context, core->handle(), parameters) < 0)
        return nullptr;
    return std::unique_ptr<MpvCanvas>(new MpvCanvas(core, context));
}

MpvCanvas::MpvCanvas(const std::shared_ptr<MpvCore> &core, mpv_render_context *context)
    : m_core(core), m_context(context)
{
    mpv_render_context_set_update_callback(m_context, &MpvCore::announcePicture, m_core.get());
    // Without waiting: mpv may wait for the render thread. After a change of its output libmpv 0.35 sometimes stops
    // reading. A seek makes it go on.
    m_core->command({"set", "vo", "libmpv"});
    m_core->command({"seek", "0", "relative+exact"});
}

/// mpv gets another output first, because it ends a silent video that it cannot draw. Before that, it waits up to 0.2 s
/// for its last picture to be drawn, so the picture is skipped.
MpvCanvas::~MpvCanvas()
{
    mpv_render_context_set_update_callback(m_context, nullptr, nullptr);
    int isSkipped = 1;
    int waitsForPicture = 0;
    std::array take{mpv_render_param{MPV_RENDER_PARAM_SKIP_RENDERING, &isSkipped},
                    mpv_render_param{MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &waitsForPicture},
                    mpv_render_param{MPV_RENDER_PARAM_INVALID, nullptr}};
    draw(take.data());
    mpv_set_property_string(m_core->handle(), "vo", "null");
    m_core->command({"seek", "0", "relative+exact"});
    mpv_render_context_free(m_context);
    MpvCore::announcePicture(m_core.get()); // Another canvas may wait for its turn.
}

void MpvCanvas::draw(mpv_render_param *target)
{
    mpv_render_context_render(m_context, target);
}

} // namespace zelvano
