// Polygons: vertices, text, files, drawing.
#include "measure/Poly.h"

#include "foundation/Archive.h"
#include "foundation/Graph.h"
#include "measure/polygon/PolyFrame.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

namespace Tesk {

using namespace polygons;

namespace {

constexpr ArchiveFormat format = {"TPOL", 1, L"File \"%ls\" is not a Poly file",
                                  L"The version number \"%d\" of this Poly file is too high"};
constexpr int vertexBytes = 16;
constexpr int markArms = 3;
/// Beyond, squares are no numbers.
constexpr double farthest = 1e150;

/// The shortest text that reads back as the same number.
void AppendNumber(std::string& text, double value)
{
    char digits[32];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

} // namespace

bool Poly::RefuseVoid(const Entry& entry, const wchar_t* message) const
{
    return Length < 1 && entry.Refuse(VoidObject, message);
}

bool Poly::Refuses(const Entry& entry, const wchar_t* message) const
{
    if (RefuseVoid(entry, message)) return true;
    const std::span<const XY> vertices = View();
    for (std::size_t i = 0; i < vertices.size(); i++)
        if (!(std::abs(vertices[i].X) <= farthest && std::abs(vertices[i].Y) <= farthest))
            return entry.Refuse(OutOfRange, L"The vertex (%d) of this polygon is not finite or too far",
                                static_cast<int>(i));
    return false;
}

int Poly::CheckIndex(int index) const
{
    if (Length < 1) return Status::Format(VoidObject, asPolygon);
    if (index >= 0 && index < Length) return NoError;
    return Status::Format(OutOfRange, L"The element index (%d) is out of the polyline range [0..%d]", index,
                          Length - 1);
}

void Poly::Take(std::vector<XY>&& vertices, bool closed)
{
    const int length = static_cast<int>(vertices.size());
    vertices_.Replace(std::move(vertices));
    Length = length;
    Closed = closed;
}

void Poly::Append(const XY& Vertex)
{
    const Entry entry("Tesk::Poly::Append");
    const XY vertex = Vertex;
    if (entry.Guards(noMemory, [&] { vertices_.Write().push_back(vertex); })) Length += 1;
}

void Poly::Clear()
{
    const Entry entry("Tesk::Poly::Clear");
    vertices_.Reset();
    Length = 0;
    Closed = false;
}

XY& Poly::Vertex(int Index)
{
    const Entry entry("Tesk::Poly::Vertex");
    thread_local XY dummy(0, 0);
    XY* vertex = &dummy;
    if (!entry.Refuses(CheckIndex(Index)))
        entry.Guards(noMemory, [&] { vertex = &vertices_.Write()[static_cast<std::size_t>(Index)]; });
    return *vertex;
}

const XY& Poly::Vertex(int Index) const
{
    const Entry entry("Tesk::Poly::Vertex");
    static const XY dummy(0, 0);
    return entry.Refuses(CheckIndex(Index)) ? dummy : View()[static_cast<std::size_t>(Index)];
}

const char* Poly::ToAsciiString(int Index) const
{
    const Entry entry("Tesk::Poly::ToAsciiString");
    if (Length < 1) {
        entry.Refuse(OutOfRange, L"No sample has been appended yet, the profile is empty");
        return "";
    }
    const std::int64_t from = Index == -1 ? 0 : Index < 0 ? std::int64_t{Length} + Index : Index;
    if (from < 0 || from >= Length) {
        entry.Refuse(OutOfRange, L"The vertex index (%d) must be in range [0..%d]", Index, Length - 1);
        return "";
    }
    const std::size_t count = Index == -1 ? View().size() : 1;
    const bool made = entry.Guards(noMemory, [&] {
        text_ = "X\tY\n";
        for (const XY& vertex : View().subspan(static_cast<std::size_t>(from), count)) {
            AppendNumber(text_, vertex.X);
            text_ += '\t';
            AppendNumber(text_, vertex.Y);
            text_ += '\n';
        }
    });
    return made ? text_.c_str() : "";
}

void Poly::Transfer(Archive& Block)
{
    Block.Header(format);
    bool closed = Closed;
    int length = Length;
    Block(closed);
    Block.Count(length, vertexBytes);
    if (!Block.Good()) return;
    std::vector<XY> vertices;
    if (Block.Reading())
        vertices.resize(static_cast<std::size_t>(length));
    else
        vertices = vertices_.Read();
    for (XY& vertex : vertices)
        Block(vertex.X, vertex.Y);
    if (Block.Reading() && Block.Good()) Take(std::move(vertices), closed);
}

void Poly::Read(const char* PathName)
{
    ReadModel("Tesk::Poly::Read", PathName, *this);
}

void Poly::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Poly::Read", PathName, *this);
}

void Poly::Write(const char* PathName) const
{
    WriteModel("Tesk::Poly::Write", PathName, *this);
}

void Poly::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Poly::Write", PathName, *this);
}

void Poly::Draw(bool Vertices, bool Edges) const
{
    if (Length < 1) return;
    if (Edges && Length > 1) Graph::Polyline(this->Vertices(), Length, Closed);
    // A single vertex has no stroke that would show it.
    if (Vertices || (Edges && Length == 1))
        for (const XY& vertex : View())
            Graph::Cross(vertex.X, vertex.Y, markArms);
}

void Poly::ShallowCopy(const Poly& Src, bool)
{
    const Entry entry("Tesk::Poly::ShallowCopy");
    *this = Src;
}

} // namespace Tesk
