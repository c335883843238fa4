// A whole job as a sequence: a font is trained on lids with best-before dates and written, then read again for the
// dates of others, in which missing and wrong characters are named.
#include "engine/Sequence.h"
#include "read/CharReader.h"
#include "samples/Lids.h"

#include <cstddef>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

using namespace TeskTests;

namespace {

class Dates : public SequenceWithFiles
{
protected:
    static CharReader& ReaderOf(const Operation& operation) { return Value<CharReader>(operation, L"CharReader"); }
    std::string Picture(const lids::Lid& lid, int number)
    {
        const std::string path = File("lid" + std::to_string(number) + ".png");
        lid.picture.Write(path.c_str());
        return path;
    }
    /// The reader of one operation goes on to the last one.
    void Bind(Operation& operation, const Operation& source)
    {
        for (std::size_t i = 0; i < operation.Args.size(); i++)
            if (operation.Args[i].Variable == &Argument<CharReader>(operation, L"CharReader"))
                engine_.ReplaceOperationArgument(engine_.NumOperations() - 1, static_cast<int>(i),
                                                 &Argument<CharReader>(source, L"CharReader"));
    }
    scene::Noise noise_;
};

/// What a reader that discards makes of a lid: a question mark where the fault is.
std::string ExpectedText(unsigned number, int faultAt)
{
    lids::Lid lid;
    lids::Compose(number, lid);
    std::string text = lids::TextOf(lid);
    int index = 0;
    for (char& c : text)
        if (c != ' ' && c != '\n' && index++ == faultAt) c = '?';
    return text;
}

std::string Contents(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(Dates, OfLidsAreReadAndWhatIsWrongIsNamed)
{
    // Each lid is segmented and trained on the font that the one before has left.
    constexpr int trained = lids::trained, checked = 20;
    Operation* segmented = nullptr;
    for (int i = 0; i < trained; i++) {
        lids::Lid lid;
        lids::MakeTrained(static_cast<unsigned>(i), noise_, lid);
        SetPath(Append(L"Image", L"Read  from File"), Picture(lid, i));
        Operation& segment = Append(L"CharReader", L"Segment Characters");
        if (i > 0) Bind(segment, At(engine_.NumOperations() - 3));
        Run();
        ASSERT_EQ(ReaderOf(segment).NumChars, lids::characters) << i;
        if (i == 0) {
            segmented = &segment;
            ReaderOf(segment).TakeLayout();
            ReaderOf(segment).GuessSize = false;
            engine_.ChangeVariable(&Argument<CharReader>(segment, L"CharReader"));
        }
        Operation& train = Append(L"CharReader", L"Train Font");
        SetText(Argument<const char*>(train, L"Codes"), lids::CharactersOf(lid));
        Run();
        EXPECT_EQ(ReaderOf(train).NumFontChars, lids::characters * (i + 1));
        EXPECT_FALSE(ReaderOf(train).GuessSize) << "as it was set at the start";
    }
    ASSERT_EQ(ReaderOf(*segmented).NumLayoutChars, lids::characters);
    const std::string fontPath = File("lids.fnt");
    Operation& write = Append(L"CharReader", L"Write  to File");
    SetPath(write, fontPath);
    lids::SetChecks(ReaderOf(write));
    Run();
    EXPECT_EQ(ReaderOf(write).NumFontChars, trained * lids::characters) << "nothing is trained twice";
    const std::string fontBytes = Contents(fontPath);

    // Another picture is segmented, but not taken for the text that was typed for the first one.
    lids::Lid other;
    lids::Make(77, lids::Fault::None, noise_, other);
    SetPath(At(0), Picture(other, 0));
    Run();
    EXPECT_EQ(ReaderOf(*segmented).NumChars, lids::characters);
    EXPECT_EQ(ReaderOf(write).NumFontChars, trained * lids::characters);

    SetPath(Append(L"CharReader", L"Read  from File"), fontPath);
    Operation& read = Append(L"Image", L"Read  from File");
    Operation* decode = nullptr;
    for (unsigned i = 0; i < checked; i++) {
        const auto fault = i % 3 != 2 ? lids::Fault::None : i % 2 ? lids::Fault::Missing : lids::Fault::Wrong;
        lids::Lid lid;
        lids::Make(500 + i, fault, noise_, lid);
        SetPath(read, Picture(lid, trained));
        Run();
        if (!decode) {
            decode = &Append(L"CharReader", L"Read Characters");
            Run();
            ASSERT_EQ(ReaderOf(*decode).NumFontChars, trained * lids::characters);
        }
        const CharReader& reader = ReaderOf(*decode);
        EXPECT_EQ(static_cast<const char*>(reader.AsciiString), ExpectedText(500 + i, lid.faultAt)) << i;
        const std::vector<int> named = lids::Doubtful(reader);
        EXPECT_EQ(named, fault == lids::Fault::None ? std::vector<int>() : std::vector<int>{lid.faultAt}) << i;
    }

    EXPECT_EQ(fontBytes, Contents(fontPath)) << "nobody has trained again";

    // A setting that is changed for the reading alone stays there, and what is read follows it.
    ReaderOf(*decode).MinimumScore = 1;
    ReaderOf(*decode).GlobalFilter = L'A';
    engine_.ChangeVariable(&Argument<CharReader>(*decode, L"CharReader"));
    Run();
    Run();
    EXPECT_EQ(ReaderOf(*decode).MinimumScore, 1);
    EXPECT_EQ(lids::Doubtful(ReaderOf(*decode)).size(), static_cast<std::size_t>(lids::characters));
    for (const wchar_t* line : {L".MinimumScore= 1.000000;\n", L".GlobalFilter= 'A';\n"})
        EXPECT_NE(ScriptText(engine_, 0).find(line), std::wstring::npos);
}

} // namespace
