#include "workbench/views/QtServices.h"

#include "workbench/views/Text.h"

#include <QApplication>
#include <QClipboard>
#include <QImage>
#include <QMessageBox>
#include <QMimeData>
#include <QPixmap>
#include <QSettings>
#include <QWidget>
#include <QtEndian>

#include <cstring>

namespace TeskPlus {

namespace {

class QtMessageBox final : public Tesk::IMessageBox
{
public:
    void Show(const wchar_t* Title, const wchar_t* Text) override
    {
        QMessageBox box(QMessageBox::Critical, Qt16(Title), Qt16(Text), QMessageBox::Ok);
        box.exec();
    }
};

/// A device-independent bitmap is a bitmap file without its first 14 bytes.
constexpr int fileHeader = 14;

QImage ImageOfDib(const std::vector<std::uint8_t>& dib)
{
    if (dib.size() < 40) return {};
    std::uint32_t headerSize = 0, used = 0, compression = 0;
    std::uint16_t bits = 0;
    std::memcpy(&headerSize, dib.data(), 4);
    std::memcpy(&bits, dib.data() + 14, 2);
    std::memcpy(&compression, dib.data() + 16, 4);
    std::memcpy(&used, dib.data() + 32, 4);
    if (bits <= 8 && used == 0) used = 1u << bits;
    const std::uint64_t offset = fileHeader + std::uint64_t{headerSize} + 4 * std::uint64_t{bits <= 8 ? used : 0} +
                                 (compression == 3 && headerSize == 40 ? 12 : 0);
    if (offset > dib.size() + fileHeader) return {};
    QByteArray file(fileHeader, 0);
    file[0] = 'B';
    file[1] = 'M';
    qToLittleEndian<quint32>(static_cast<quint32>(dib.size() + fileHeader), file.data() + 2);
    qToLittleEndian<quint32>(static_cast<quint32>(offset), file.data() + 10);
    file.append(reinterpret_cast<const char*>(dib.data()), static_cast<qsizetype>(dib.size()));
    return QImage::fromData(file, "BMP");
}

/// Gray pictures stay gray.
std::vector<std::uint8_t> DibOfImage(const QImage& image)
{
    const bool isGray = image.depth() == 8 && image.isGrayscale();
    const int width = image.width(), height = image.height(), bytes = (isGray ? 1 : 3) * width;
    const auto pitch = static_cast<std::size_t>((bytes + 3) & ~3);
    const std::size_t colors = isGray ? 256 : 0, offset = 40 + 4 * colors;
    std::vector<std::uint8_t> dib(offset + pitch * static_cast<std::size_t>(height));
    qToLittleEndian<quint32>(40, dib.data());
    qToLittleEndian<qint32>(width, dib.data() + 4);
    qToLittleEndian<qint32>(height, dib.data() + 8);
    qToLittleEndian<quint16>(1, dib.data() + 12);
    qToLittleEndian<quint16>(isGray ? 8 : 24, dib.data() + 14);
    qToLittleEndian<quint32>(static_cast<quint32>(colors), dib.data() + 32);
    for (std::size_t i = 0; i < colors; i++)
        std::memset(dib.data() + 40 + 4 * i, static_cast<int>(i), 3);
    const QImage pixels = image.convertToFormat(isGray ? QImage::Format_Grayscale8 : QImage::Format_BGR888);
    for (int y = 0; y < height; y++)
        std::memcpy(dib.data() + offset + pitch * static_cast<std::size_t>(height - 1 - y), pixels.constScanLine(y),
                    static_cast<std::size_t>(bytes));
    return dib;
}

/// The block as it was put, beside the picture made of it: what comes back is the same to the byte.
constexpr const char* dibFormat = "application/x-tesk-dib";

class QtClipboard final : public Tesk::IClipboard
{
public:
    void Empty() override { QApplication::clipboard()->clear(); }

    void Put(int Format, std::vector<std::uint8_t> Block) override
    {
        // One description after the other of the same thing: those already there are kept.
        auto* data = new QMimeData;
        const QMimeData* former = QApplication::clipboard()->mimeData();
        if (former && former->hasText()) data->setText(former->text());
        if (former && former->hasImage()) data->setImageData(former->imageData());
        if (former && former->hasFormat(dibFormat)) data->setData(dibFormat, former->data(dibFormat));
        if (Format == Text)
            data->setText(QString::fromLocal8Bit(
                reinterpret_cast<const char*>(Block.data()),
                static_cast<qsizetype>(strnlen(reinterpret_cast<const char*>(Block.data()), Block.size()))));
        else if (Format == UnicodeText) {
            QString text(reinterpret_cast<const QChar*>(Block.data()), static_cast<qsizetype>(Block.size() / 2));
            data->setText(text.left(text.indexOf(QChar(0))));
        } else if (Format == Dib || Format == Bitmap)
            data->setImageData(ImageOfDib(Block));
        if (Format == Dib)
            data->setData(dibFormat, QByteArray(reinterpret_cast<const char*>(Block.data()),
                                                static_cast<qsizetype>(Block.size())));
        QApplication::clipboard()->setMimeData(data);
    }

    bool Get(int Format, std::vector<std::uint8_t>& Block) override
    {
        const QMimeData* data = QApplication::clipboard()->mimeData();
        if (!data) return false;
        if (Format == Text && data->hasText()) {
            const QByteArray text = data->text().toLocal8Bit();
            Block.assign(text.begin(), text.end());
            Block.push_back(0);
            return true;
        }
        if (Format == UnicodeText && data->hasText()) {
            const QString text = data->text();
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.utf16());
            Block.assign(bytes, bytes + 2 * (text.size() + 1));
            return true;
        }
        if (Format == Dib && data->hasFormat(dibFormat)) {
            const QByteArray block = data->data(dibFormat);
            Block.assign(block.begin(), block.end());
            return true;
        }
        if (Format == Dib && data->hasImage()) {
            const auto image = qvariant_cast<QImage>(data->imageData());
            if (image.isNull()) return false;
            Block = DibOfImage(image);
            return true;
        }
        return false;
    }
};

class QtWindowCapture final : public Tesk::IWindowCapture
{
public:
    bool Capture(void* Window, int& Width, int& Height, std::vector<std::uint8_t>& Pixels) override
    {
        // Only a live widget of this program counts as a window.
        for (QWidget* widget : QApplication::allWidgets())
            if (widget == Window) {
                const QImage image = widget->grab().toImage().convertToFormat(QImage::Format_RGB32);
                Width = image.width();
                Height = image.height();
                Pixels.resize(4 * static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height));
                for (int y = 0; y < Height; y++)
                    std::memcpy(Pixels.data() + 4 * static_cast<std::size_t>(Width) * static_cast<std::size_t>(y),
                                image.constScanLine(y), 4 * static_cast<std::size_t>(Width));
                return true;
            }
        return false;
    }
};

class QtSettings final : public Tesk::ISettings
{
public:
    std::wstring Read(const std::wstring& Name, const std::wstring& Default) override
    {
        return QSettings("Halden", "Tesk+").value(Qt16(Name), Qt16(Default)).toString().toStdWString();
    }
    void Write(const std::wstring& Name, const std::wstring& Value) override
    {
        QSettings("Halden", "Tesk+").setValue(Qt16(Name), Qt16(Value));
    }
};

QtMessageBox messageBox;
QtClipboard clipboard;
QtWindowCapture capture;
QtSettings settings;

} // namespace

QtServices::QtServices()
{
    Tesk::Services::Install(&messageBox);
    Tesk::Services::Install(&clipboard);
    Tesk::Services::Install(&capture);
    Tesk::Services::Install(&settings);
}

QtServices::~QtServices()
{
    Tesk::Services::Install(static_cast<Tesk::IMessageBox*>(nullptr));
    Tesk::Services::Install(static_cast<Tesk::IClipboard*>(nullptr));
    Tesk::Services::Install(static_cast<Tesk::IWindowCapture*>(nullptr));
    Tesk::Services::Install(static_cast<Tesk::ISettings*>(nullptr));
}

} // namespace TeskPlus
