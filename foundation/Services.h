// What the library needs of a desktop, each with a default that needs no screen. A program with windows installs its
// own at start.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Tesk {

/// A message to the user that waits until it is read.
class IMessageBox
{
public:
    virtual ~IMessageBox() = default;
    virtual void Show(const wchar_t* Title, const wchar_t* Text) = 0;
};

/// The clipboard as blocks of bytes by format number.
class IClipboard
{
public:
    static constexpr int Text = 1;         ///< 8-bit text with its terminating zero
    static constexpr int Bitmap = 2;       ///< a picture of a window
    static constexpr int Dib = 8;          ///< a device-independent bitmap
    static constexpr int UnicodeText = 13; ///< 16-bit text with its terminating zero

    virtual ~IClipboard() = default;
    virtual void Empty() = 0;
    virtual void Put(int Format, std::vector<std::uint8_t> Block) = 0;
    /// False if there is nothing in that format.
    virtual bool Get(int Format, std::vector<std::uint8_t>& Block) = 0;
};

/// A picture of the client area of a window: rows of 4 bytes a pixel (blue, green, red, alpha), top row first.
class IWindowCapture
{
public:
    virtual ~IWindowCapture() = default;
    /// False if the handle is no window.
    virtual bool Capture(void* Window, int& Width, int& Height, std::vector<std::uint8_t>& Pixels) = 0;
};

/// Named settings that outlive the program.
class ISettings
{
public:
    virtual ~ISettings() = default;
    virtual std::wstring Read(const std::wstring& Name, const std::wstring& Default) = 0;
    virtual void Write(const std::wstring& Name, const std::wstring& Value) = 0;
};

/// The services in force. `Install` takes a service that must live as long as it is installed; null restores the
/// default: a message on the error stream, a clipboard inside the process, no window to capture, settings in memory.
class Services
{
public:
    static IMessageBox& MessageBox();
    static IClipboard& Clipboard();
    static IWindowCapture& WindowCapture();
    static ISettings& Settings();

    static void Install(IMessageBox* Service);
    static void Install(IClipboard* Service);
    static void Install(IWindowCapture* Service);
    static void Install(ISettings* Service);
};

} // namespace Tesk
