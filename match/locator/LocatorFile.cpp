// Locator models in ".loc" files.
#include "match/Locator.h"

#include "foundation/Archive.h"
#include "image/core/Refusals.h"
#include "image/core/StoredRows.h"
#include "match/locator/LocatorModel.h"

#include <memory>
#include <utility>

namespace Tesk {

using namespace locator;

namespace {

constexpr ArchiveFormat format = {"TLOC", 9, L"File \"%ls\" is not a Locator Model",
                                  L"The version number \"%d\" of this Locator Model is too high"};

void TransferImage(Archive& block, Image& image)
{
    if (images::TransferSize(block, image)) images::TransferRows(block, image);
}

} // namespace

/// The stored parts of a model from or to a file of a version; the search mask apart.
static void TransferModel(Archive& block, int version, Model& model, double& maxOverlap)
{
    if (version >= 6) {
        int word = 2;
        block(word);
    }
    if (version >= 7) {
        int x = model.x, y = model.y;
        block(x, y);
    }
    TransferImage(block, model.levels[0].pattern);
    bool masked = false;
    if (version >= 4) {
        TransferImage(block, model.levels[0].mask);
        masked = model.levels[0].mask.Type != Undefined;
    }
    if (version >= 5)
        block(model.mode);
    else
        model.mode = masked ? Modes::Mask : Modes::Rectangle;
    if (block.Reading() && masked) model.mode = Modes::Mask;
    if (version >= 8)
        block(maxOverlap);
    else
        maxOverlap = 0;
}

/// Whether what was read is a model that could have been trained.
static bool IsWhole(const Model& model)
{
    const Image &pattern = model.levels[0].pattern, &mask = model.levels[0].mask;
    if (pattern.Type != Gray || std::int64_t{pattern.Width} * pattern.Height < leastPixels) return false;
    if (model.mode == Modes::Mask) return mask.Width == pattern.Width && mask.Height == pattern.Height;
    return model.mode == Modes::Rectangle || model.mode == Modes::Disk;
}

void Locator::Transfer(Archive& Block)
{
    const int version = Block.Header(format);
    if (!Block.Good()) return;
    if (!Block.Reading() && !model_) {
        // Nothing learned yet is a model of no size.
        Model none;
        bool masked = false;
        TransferSettings(Block, version);
        TransferModel(Block, version, none, MaxOverlap);
        Block(masked);
        return;
    }
    TransferSettings(Block, version);
    const auto model = std::make_shared<Model>();
    if (!Block.Reading()) {
        model->mode = model_->mode;
        model->x = model_->x;
        model->y = model_->y;
        model->levels[0].pattern = model_->levels[0].pattern;
        model->levels[0].mask = model_->levels[0].mask;
    } else if (model_) {
        model->x = model_->x;
        model->y = model_->y;
    }
    TransferModel(Block, version, *model, MaxOverlap);
    bool masked = searchMask_ != nullptr;
    if (version >= 9)
        Block(masked);
    else
        masked = false;
    const auto masks = std::make_shared<Masks>();
    if (masked) {
        if (!Block.Reading()) masks->levels[0] = searchMask_->levels[0];
        TransferImage(Block, masks->levels[0]);
    }
    if (!Block.Reading() || !Block.Good()) return;
    TakeRead(Block, model, masked ? masks : nullptr);
}

void Locator::TransferSettings(Archive& block, int version)
{
    block(MaxDepths, MaxLocations, MinScore, MinAngle, MaxAngle, MinScale, MaxScale);
    if (version >= 2)
        block(Edges);
    else
        Edges = false;
    if (version >= 3)
        block(Symmetry);
    else
        Symmetry = 1;
}

void Locator::TakeRead(Archive& block, const std::shared_ptr<Model>& model, const std::shared_ptr<Masks>& masks)
{
    const Image& pattern = model->levels[0].pattern;
    if (pattern.Type == Undefined) {
        model_.reset();
        searchMask_.reset();
        locations_.reset();
        MaxAreaDepths = MaxEdgesDepths = NumLocations = 0;
        return;
    }
    if (!IsWhole(*model) || (masks && masks->levels[0].Type != Gray))
        return block.Refuse(CannotRead, L"Cannot read file \"%ls\"", block.Name());
    int code = model->Build(false);
    if (code == NoError && masks) code = masks->Build(*model, Max(model->areaDepths, model->edgesDepths));
    if (code != NoError) return block.Refuse(code, L"%ls", images::noWorkingMemory);
    searchMask_ = masks;
    Take(model);
}

void Locator::Read(const char* PathName)
{
    ReadModel("Tesk::Locator::Read", PathName, *this);
}

void Locator::Read(const wchar_t* PathName)
{
    ReadModel("Tesk::Locator::Read", PathName, *this);
}

void Locator::Write(const char* PathName) const
{
    WriteModel("Tesk::Locator::Write", PathName, *this);
}

void Locator::Write(const wchar_t* PathName) const
{
    WriteModel("Tesk::Locator::Write", PathName, *this);
}

} // namespace Tesk
