#include "workbench/views/picture/CopyText.h"

#include "foundation/Services.h"

#include <QString>

namespace TeskPlus {

using namespace Tesk;

void CopyText(const std::wstring& Text)
{
    const QString text = QString::fromStdWString(Text);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.utf16());
    Services::Clipboard().Empty();
    Services::Clipboard().Put(IClipboard::UnicodeText, {bytes, bytes + 2 * (text.size() + 1)});
}

} // namespace TeskPlus
