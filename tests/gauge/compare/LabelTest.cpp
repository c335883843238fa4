// A whole job: printed labels with known defects, compared with good ones.
#include "../../Failures.h"
#include "samples/Labels.h"

#include <gtest/gtest.h>

namespace Tesk {
namespace {

class LabelTest : public checks::IgnoringFailures
{};

TEST_F(LabelTest, EveryDefectIsFoundAndNothingElse)
{
    scene::Noise noise;
    Comparator comparator;
    labels::Teach(16, noise, comparator);
    ASSERT_EQ(comparator.Mode, Trained);
    ASSERT_EQ(int(comparator.NumSamples), 16);
    unsigned place = 11;
    for (int round = 0; round < 4; round++)
        for (const labels::Defect defect : {labels::Defect::None, labels::Defect::MissingDot, labels::Defect::Smear,
                                            labels::Defect::WrongLetter, labels::Defect::Scratch}) {
            labels::Label label;
            labels::Print(defect, place += 37, noise, label);
            const labels::Verdict verdict = labels::Inspect(comparator, label);
            const char* name = labels::names[static_cast<int>(defect)];
            EXPECT_EQ(verdict.isFound, defect != labels::Defect::None) << name << ' ' << place;
            EXPECT_EQ(verdict.elsewhere, 0) << name << ' ' << place;
        }
}

} // namespace
} // namespace Tesk
