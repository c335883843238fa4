// Settings of an object that follow those of another one, but for those that have been changed on it.
#pragma once

namespace Tesk {

/// Gives `dst` the settings of `own` that are no longer what they were in `former`.
template <typename Settings, typename... Setting>
void KeepChanged(const Settings& own, const Settings& former, Settings& dst, Setting Settings::*... settings)
{
    const auto keep = [&](auto setting) {
        if (own.*setting != former.*setting) dst.*setting = own.*setting;
    };
    (keep(settings), ...);
}

} // namespace Tesk
