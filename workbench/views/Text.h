// Between the wide texts of the library and Qt's.
#pragma once

#include <QString>

#include <string>

namespace TeskPlus {

inline QString Qt16(const wchar_t* text)
{
    return text ? QString::fromWCharArray(text) : QString();
}
inline QString Qt16(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

} // namespace TeskPlus
