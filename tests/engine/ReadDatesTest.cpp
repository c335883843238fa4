// A whole job as a sequence: a font is trained on lids with best-before dates and written, then read again for the dates
// of others, in which missing and wrong characters are named.
#include "engine/Sequence.h"
#include "read/CharReader.h"
#include "samples/Lids.h"

#include <algorithm>
#include <cwchar>
#include <string>
#include <vector>

using namespace TeskTests;

namespace {

class Dates : public SequenceTest
{
protected:
    Operation& Add(const wchar_t* className, const wchar_t* label)
    {
        return Append(Engine::FindMethod(className, nullptr, label));
    }
    template <typename T>
    static Var<T>& Argument(const Operation& operation, const wchar_t* identifier)
    {
        for (const Arg& argument : operation.Args)
            if (!std::wcscmp(Engine::Tree[argument.Node]->Identifier, identifier))
                return dynamic_cast<Var<T>&>(*argument.Variable);
        throw std::runtime_error("no such argument");
    }
    static CharReader& ReaderOf(const Operation& operation) { return Argument<CharReader>(operation, L"CharReader").Value; }
    void SetPath(Operation& operation, const std::string& path)
    {
        auto& variable = Argument<const char*>(operation, L"PathName");
        SetText(variable, path);
        engine_.ChangeVariable(&variable);
    }
    std::string Picture(const lids::Lid& lid)
    {
        const std::string path = testing::TempDir() + "lid.png";
        lid.picture.Write(path.c_str());
        return path;
    }
    void Run()
    {
        engine_.Execute();
        ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    }
    /// Property of a reader, by its number.
    template <typename T>
    T Property(int number, AnyVariable& reader)
    {
        Var<T> value;
        EXPECT_TRUE(engine_.GetProperty(&value, number, &reader)) << number;
        return value.Value;
    }

    scene::Noise noise_;
};

TEST_F(Dates, OfLidsAreReadAndWhatIsWrongIsNamed)
{
    const std::string fontPath = testing::TempDir() + "lids.fnt";
    {
        // Training: the text is typed under the boxes, and Apply runs the operation once for each lid.
        Operation& read = Add(L"Image", L"Read  from File");
        Operation& segment = Add(L"CharReader", L"Segment Characters");
        Operation& train = Add(L"CharReader", L"Train Font");
        Operation& write = Add(L"CharReader", L"Write  to File");
        CharReader& reader = ReaderOf(segment);
        constexpr int trained = 7;
        for (int i = 0; i < trained; i++) {
            lids::Lid lid;
            lids::Compose(static_cast<unsigned>(i), lid);
            lids::Photograph(lid, 5 * (2.0 * ((i + 3) % trained) / (trained - 1) - 1), noise_);
            SetPath(read, Picture(lid));
            SetText(Argument<const char*>(train, L"Codes"), lids::CharactersOf(lid));
            engine_.ChangeVariable(&Argument<const char*>(train, L"Codes"));
            Run();
            ASSERT_EQ(reader.NumChars, lids::characters) << i;
            if (i == 0) reader.TakeLayout();
            reader.GuessSize = false;
            engine_.ChangeVariable(&Argument<CharReader>(segment, L"CharReader"));
        }
        SetPath(write, fontPath);
        Run();
        EXPECT_EQ(ReaderOf(write).NumFontChars, trained * lids::characters);
    }
    CharReader written;
    written.Read(fontPath.c_str());
    ASSERT_EQ(Status::Error().Code, NoError) << Status::AsciiError();
    EXPECT_EQ(written.NumFontChars, 7 * lids::characters);
    EXPECT_EQ(written.NumLayoutChars, lids::characters);
}

} // namespace
