// What a program says of each type: declarations, literals, drawing.
#include "engine/Sequence.h"

#include <algorithm>
#include <clocale>
#include <utility>

using namespace TeskTests;

TEST_F(SequenceTest, EachTypeIsDeclaredAndDrawnInItsWay)
{
    AppendImage(1);
    Append(L"Build");
    Append(L"Regional Maxima");
    Append(L"Get Row");
    Append(L"Compute from Image");
    Append(L"Convolve");
    // The histogram is read as a profile, and stays a histogram to the program.
    ASSERT_EQ(Name(Append(L"Integrate").Args[0]), L"Histogram0");
    const struct
    {
        const wchar_t *native, *basic;
    } cases[] = {{L"\tImage Copied0;\n", L"\tDim Copied0 as TeskNET.Image\n"},
                 {L"\tHistogram Histogram0;\n", L"\tDim Histogram0 as TeskNET.Histogram\n"},
                 {L"\tHistogram0.Plot(10, 10, 512, 256, false, 0, 0, 0, 1);\n",
                  L"\tHistogram0.Plot(10, 10, 512, 256, False, 0, 0, 0, 1)\n"},
                 {L"\tPyramid0.Draw(false);\n", L"\tPyramid0.Draw(False)\n"},
                 {L"\tProfile0.Draw(false);\n", L"\tProfile0.Draw(False)\n"},
                 {L"\tRegionalMaxima0.Draw(false);\n", L"\tRegionalMaxima0.Draw(False)\n"},
                 {L"\tKernel0.\n", L"\tKernel0.\n"}};
    const std::wstring native = ScriptText(engine_, 0), basic = ScriptText(engine_, 2);
    for (const auto& c : cases) {
        EXPECT_NE(native.find(c.native), std::wstring::npos) << Narrow(c.native) << Narrow(native.c_str());
        EXPECT_NE(basic.find(c.basic), std::wstring::npos) << Narrow(c.basic);
    }
    EXPECT_EQ(native.find(L"Profile Histogram0"), std::wstring::npos);
    EXPECT_NE(ScriptText(engine_, 1).find(L"\tHistogram0= new TeskNET.Histogram();\n"), std::wstring::npos);
}

TEST_F(SequenceTest, EachTypeOfValueHasItsLiteral)
{
    const auto call = [&](const Operation& operation, int language) {
        int which = 0;
        while (&At(which) != &operation)
            which++;
        const std::wstring text = ScriptText(engine_, language, which);
        return text.substr(text.rfind(L'\t'));
    };
    Operation& color = Append(L"Constant - Color");
    ValueOf<RgbPixel>(color, 2) = RgbPixel(1, 2, 3);
    EXPECT_EQ(call(color, 1), L"\tTeskNET.Operator.Copy(TeskNET.RgbPixel(1, 2, 3), Copied0);\n");
    Operation& opaque = Append(L"Constant - Color and Alpha");
    ValueOf<RgbaPixel>(opaque, 2) = RgbaPixel(1, 2, 3, 4);
    EXPECT_EQ(call(opaque, 0), L"\tOperator::Copy(RgbaPixel(1, 2, 3, 4), Copied1);\n");
    Operation& rotate = Append(L"Rotate by Angle");
    ValueOf<XY>(rotate, 2) = XY(1.5, -2);
    EXPECT_NE(call(rotate, 3).find(L"Rotate(TeskNET::XY(1.5, -2), TeskNET::XY("), std::wstring::npos);
    Operation& follow = Append(L"Follow");
    ValueOf<Site>(follow, 1) = Site(7, -8);
    EXPECT_EQ(call(follow, 2),
              L"\t" + Name(follow.Args[0]) + L".Follow(TeskNET.Site(7, -8), Auto, Rotated0, True, True, True)\n");
    // A class that does not exist yet stands as a question mark; its numbers are printed all the same.
    Operation& select = Append(L"Fractional Feature");
    const std::pair<float, const wchar_t*> reals[] = {{2.f, L"2.f"}, {0.5f, L"0.500000f"}, {-10.f, L"-10.f"},
                                                      {0.f, L"0.f"}, {1e9f, L"1.e+09f"},   {1.25e-7f, L"1.25000e-07f"}};
    for (const auto& [value, text] : reals) {
        ValueOf<float>(select, 3) = value;
        EXPECT_NE(call(select, 0).find(std::wstring(L", ") + text + L", "), std::wstring::npos)
            << Narrow(call(select, 0).c_str());
    }
}

TEST_F(SequenceTest, NumbersKeepTheirPointWhateverTheLocale)
{
    const std::string kept = std::setlocale(LC_ALL, nullptr);
    const char* comma = nullptr;
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE.utf8", "fr_FR.utf8", "nl_NL.UTF-8", "es_ES.UTF-8"})
        if (!comma) comma = std::setlocale(LC_ALL, name);
    if (!comma) GTEST_SKIP() << "no locale with a decimal comma is installed";
    AppendImage(1);
    Operation& rotate = Append(L"Rotate by Angle");
    ValueOf<XY>(rotate, 2) = XY(1.5, -2.25);
    const std::wstring text = ScriptText(engine_, 0, 1);
    Status::Format(OutOfRange, L"%g of %ls", 0.5, L"\u00e9\u4e2d");
    std::setlocale(LC_ALL, kept.c_str());
    EXPECT_NE(text.find(L"XY(1.5, -2.25)"), std::wstring::npos) << Narrow(text.c_str());
    EXPECT_STREQ(Status::UnicodeError(), L"0.5 of \u00e9\u4e2d");
}

TEST_F(SequenceTest, AHistogramReadAsAProfileCallsTheMethodOfTheProfile)
{
    AppendImage(200);
    Append(L"Compute from Image");
    Operation& mean = Append(Engine::FindMethod(L"Profile", L"Mean", nullptr));
    ASSERT_EQ(Name(mean.Args[0]), L"Histogram0");
    engine_.Execute();
    // Of the counts, which is what a profile has, and not of the gray values.
    EXPECT_EQ(ValueOf<double>(mean, 1), 64 * 64 / 256.0);
    const wchar_t* const calls[] = {L"\tMean0= Histogram0.Profile::Mean();\n",
                                    L"\tMean0= ((TeskNET.Profile)Histogram0).Mean();\n",
                                    L"\tMean0= DirectCast(Histogram0, TeskNET.Profile).Mean()\n",
                                    L"\tMean0= Histogram0->TeskNET::Profile::Mean();\n"};
    for (int language = 0; language < 4; language++) {
        const std::wstring text = ScriptText(engine_, language, 2);
        EXPECT_NE(text.find(calls[language]), std::wstring::npos) << Narrow(text.c_str());
    }
    // What the histogram does not hide is called as it is.
    Append(Engine::FindMethod(L"Profile", L"LocalExtrema", nullptr));
    EXPECT_NE(ScriptText(engine_, 0, 3).find(L"\tHistogram0.LocalExtrema("), std::wstring::npos)
        << Narrow(ScriptText(engine_, 0, 3).c_str());
}

TEST_F(SequenceTest, WholeNumbersWithNamesArePrintedByThem)
{
    Operation& average = Append(L"Average");
    const auto names = [](const Arg& argument) { return Engine::VarNode(argument.Node)->NamesNode >= 0; };
    const auto index = std::find_if(average.Args.begin(), average.Args.end(), names);
    ASSERT_NE(index, average.Args.end());
    int& value = static_cast<Var<int>&>(*index->Variable).Value;
    EXPECT_EQ(value, AllSelected);
    for (const auto& [blobs, text] : {std::pair(AllSelected, L", AllSelected, "), std::pair(All, L", All, ")}) {
        value = blobs;
        EXPECT_NE(ScriptText(engine_, 0, 0).find(text), std::wstring::npos);
    }
    EXPECT_NE(ScriptText(engine_, 1, 0).find(L", TeskNET.BlobSelection.All, "), std::wstring::npos);
}
