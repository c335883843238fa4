#include "workbench/logic/ScriptExport.h"

#include "foundation/Services.h"

#include <cstdio>
#include <utility>

namespace TeskPlus {

const wchar_t* ScriptFilter(int Language)
{
    constexpr const wchar_t* filters[LanguageCount] = {L"C++ Files (*.cpp)|*.cpp", L"C# Files (*.cs)|*.cs",
                                                       L"Visual Basic Files (*.vb)|*.vb", L"C++ Files (*.cpp)|*.cpp"};
    return filters[Language >= 0 && Language < LanguageCount ? Language : 0];
}

bool ExportToFile(const Engine& Engine, IOperationViews& Views, int Language)
{
    const auto path = Views.ChooseFile({ScriptFilter(Language), true});
    if (!path) return false;
    std::FILE* file = std::fopen(path->c_str(), "w");
    if (!file) return false;
    Engine.Write(file, Language);
    return std::fclose(file) == 0;
}

void CopyToClipboard(const Engine& Engine, int Language, int Which)
{
    const std::wstring text = ScriptText(Engine, Language, Which);
    // Scripts are of the basic plane: names are letters and digits, and literals escape the rest.
    std::vector<std::uint8_t> wide, narrow;
    for (const wchar_t c : text + L'\0') {
        wide.push_back(static_cast<std::uint8_t>(c & 0xff));
        wide.push_back(static_cast<std::uint8_t>(c >> 8 & 0xff));
        narrow.push_back(static_cast<std::uint8_t>(c < 128 ? c : L'?'));
    }
    Services::Clipboard().Empty();
    Services::Clipboard().Put(IClipboard::UnicodeText, std::move(wide));
    Services::Clipboard().Put(IClipboard::Text, std::move(narrow));
}

} // namespace TeskPlus
