// The names of symbologies as people read them.
#include "read/core/SymbologyLabel.h"

namespace Tesk {

const wchar_t* SymbologyLabel(Symbologies symbology)
{
    switch (symbology) {
    case NoSymbology:
        break;
    case CodeEAN128:
        return L"EAN128";
    case CodeEAN13:
        return L"EAN13";
    case CodeEAN8:
        return L"EAN8";
    case CodeUPCA:
        return L"UPC-A";
    case CodeUPCE:
        return L"UPC-E";
    case Code2of5:
        return L"2of5";
    case Code39:
        return L"39";
    case Code39Extended:
        return L"39 Extended";
    case CodePharmacode:
        return L"Pharmacode";
    case CodeDatabar:
        return L"Databar";
    case CodeDatabarLimited:
        return L"Databar Limited";
    case CodeDatabarExpanded:
        return L"Databar Expanded";
    case Code93:
        return L"93";
    case CodeCodabar:
        return L"Codabar";
    case CodeITF14:
        return L"CodeITF14";
    case CodeMatrix2of5:
        return L"CodeMatrix2of5";
    case CodeMSI:
        return L"CodeMSI";
    case Code11:
        return L"Code11";
    case CodeDataMatrix:
        return L"Data Matrix";
    case CodeDMRectangle:
        return L"Data Matrix Rectangle";
    case CodeQR:
        return L"QR";
    case CodeMicroQR:
        return L"Micro QR";
    case CodeAztec:
        return L"Aztec";
    case CodeAztecCompact:
        return L"Aztec Compact";
    case CodePDF417:
        return L"PDF417";
    case CodeDotCode:
        return L"DotCode";
    }
    return L"Unknown";
}

} // namespace Tesk
