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
    // The render thread does not wait for mpv. After the change libmpv 0.35 now and then reads no further without a
    // seek.
    m_core->command({"set", "vo", "libmpv"});
    m_core->command({"seek", "0", "relative+exact"});
}

/// mpv must stop drawing here before: it would end a video without sound that it cannot draw any more. It waits up to
/// 0.2 s for its last picture to be taken.
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
