// The desktop services of the library on Qt: clipboard, message box, window capture, settings.
#pragma once

#include "foundation/Services.h"

namespace TeskPlus {

/// Installs them for the life of the object.
class QtServices
{
public:
    QtServices();
    ~QtServices();
    QtServices(const QtServices&) = delete;
    QtServices& operator=(const QtServices&) = delete;
};

} // namespace TeskPlus
