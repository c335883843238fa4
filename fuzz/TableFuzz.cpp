// Any bytes as a table file, or as the text of a table: read, then selected, sorted, printed and written again.
#include "foundation/Archive.h"
#include "measure/FeatureTable.h"

#include "Checks.h"

#include <cstdint>
#include <string>
#include <vector>

using namespace Tesk;
using namespace Tesk::fuzz;

namespace {

void Work(FeatureTable& table)
{
    for (int feature = 0; feature < table.NumFeatures && feature < 4; feature++) {
        table.SamplesSelect(feature, -3, 100, Inside, Select);
        table.SamplesSelect(feature, 0.5, 7.0, Outside, Add);
        Require(table.NumSelected >= 0 && table.NumSelected <= table.NumSamples);
        table.SamplesSort(feature, feature % 2 == 0);
        table.SamplesFirst(feature, true);
    }
    std::vector<bool> seen(static_cast<std::size_t>(int(table.NumSamples)));
    for (int i = 0; i < table.NumSamples; i++) {
        const auto row = static_cast<std::size_t>(table.Order[i]);
        Require(row < seen.size() && !seen[row]);
        seen[row] = true;
    }
    table.ToUnicodeString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Status::ErrorBehavior(IgnoreIt);
    FeatureTable table;
    table._AppendFeature(Int, L"Class");
    table._AppendFeature(Float, L"Width");
    table._AppendFeature(Bool, L"Good");
    const std::string text(reinterpret_cast<const char*>(data), size);
    table.FromAsciiString(text.c_str());
    Work(table);
    const int rows = table.NumSamples;
    Archive reader = Archive::FromMemory({data, size});
    table.Transfer(reader);
    if (!reader.Good()) {
        Require(table.NumFeatures == 3 && table.NumSamples == rows);
        return 0;
    }
    Work(table);
    const std::vector<std::uint8_t> bytes = Written(table);
    return 0;
}
