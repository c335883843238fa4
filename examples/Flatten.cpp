// Reads a photograph or a scan, flattens its lighting, filters, binarizes, thins, and writes every step: once by plain
// calls, once as a sequence that the engine runs. Both must give the same bytes.
// usage: flatten [IMAGE [FOLDER]]
#include "Tesk.h"

#include "engine/Engine.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace {

/// Wider than a letter or a coin, so that only the lighting is left.
constexpr int lightingSize = 151;

struct Step
{
    const char* name;
    const Image* image;
};

/// The five steps as a program writes them.
struct Direct
{
    Image source, lighting, flat, smooth, binary, thin;

    void Run(const std::string& path)
    {
        source.Read(path.c_str(), Gray);
        Kernel::GaussLowPass(lightingSize, lightingSize, source, lighting);
        Operator::MultiplyCorrect(source, lighting, flat, 200);
        Kernel::Binomial(flat, smooth);
        Operator::Binarize(Auto, smooth, binary, false);
        Morpho::BinaryThin(binary, thin);
    }

    std::vector<Step> Steps() const
    {
        return {{"lighting", &lighting}, {"flat", &flat}, {"smooth", &smooth}, {"binary", &binary}, {"thin", &thin}};
    }
};

/// The same steps as the workbench records them.
class Recorded
{
public:
    Operation& Add(const wchar_t* className, const wchar_t* identifier, const wchar_t* label)
    {
        auto operation = std::make_unique<Operation>();
        engine_.UnreserveVariables();
        operation->Set(engine_, Engine::FindMethod(className, identifier, label), false);
        Operation& added = engine_.InsertOperation(std::move(operation));
        engine_.FillOperation(engine_.NumOperations() - 1);
        return added;
    }

    template <typename T>
    static Var<T>& Argument(Operation& operation, const wchar_t* identifier)
    {
        for (const Arg& argument : operation.Args)
            if (!std::wcscmp(Engine::Tree[argument.Node]->Identifier, identifier))
                return static_cast<Var<T>&>(*argument.Variable);
        std::abort();
    }

    /// Binds an input to what an earlier operation made.
    void Bind(int operation, const wchar_t* identifier, AnyVariable& variable)
    {
        const auto& args = engine_.Operations[static_cast<std::size_t>(operation)]->Args;
        for (std::size_t i = 0; i < args.size(); i++)
            if (!std::wcscmp(Engine::Tree[args[i].Node]->Identifier, identifier))
                engine_.ReplaceOperationArgument(operation, static_cast<int>(i), &variable);
    }

    void Run(const std::string& path)
    {
        Engine::Trace = nullptr;
        Operation& read = Add(L"Image", L"Read", L"Read  from File");
        SetText(Argument<const char*>(read, L"PathName"), path);
        Operation& blur = Add(L"Kernel", L"GaussLowPass", L"Gauss");
        Argument<int>(blur, L"FilterWidth").Value = lightingSize;
        Argument<int>(blur, L"FilterHeight").Value = lightingSize;
        Operation& correct = Add(L"Operator", L"MultiplyCorrect", L"Multiplicative - Gray");
        Bind(2, L"Src", Argument<Image>(read, L"Image"));
        Bind(2, L"SrcWhite", Argument<Image>(blur, L"Dst"));
        Argument<int>(correct, L"White").Value = 200;
        Operation& smooth = Add(L"Kernel", L"Binomial", L"Binomial 3 x 3");
        Operation& binary = Add(L"Operator", L"Binarize", L"Threshold");
        Argument<bool>(binary, L"Above").Value = false;
        Operation& thin = Add(L"Morpho", L"BinaryThin", L"Thin");
        engine_.Execute();
        for (Operation* operation : {&blur, &correct, &smooth, &binary, &thin})
            results_.push_back(&Argument<Image>(*operation, L"Dst").Value);
        for (const auto& operation : engine_.Operations)
            std::printf("%8.3f ms  %ls\n", operation->Duration * 0.001, Engine::OpNode(operation->Node)->Label);
    }

    const std::vector<const Image*>& Results() const { return results_; }

private:
    Engine engine_;
    std::vector<const Image*> results_;
};

bool Equal(const Image& a, const Image& b)
{
    if (a.Type != b.Type || a.Width != b.Width || a.Height != b.Height) return false;
    for (int y = 0; y < a.Height; y++)
        if (std::memcmp(a.Row(y), b.Row(y), static_cast<std::size_t>(RowBytes(a.Width, a.Type))) != 0) return false;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string path = argc > 1 ? argv[1] : "samples/page.png";
    const std::filesystem::path folder = argc > 2 ? argv[2] : "flattened";
    std::error_code made;
    std::filesystem::create_directories(folder, made);
    Status::ErrorBehavior(PrintIt);
    Status::SIMDLevel(Status::BestSIMDLevel());

    Direct direct;
    direct.Run(path);
    if (direct.thin.Type == Undefined) return 1;
    Recorded recorded;
    recorded.Run(path);

    const std::vector<Step> steps = direct.Steps();
    bool same = true;
    for (std::size_t i = 0; i < steps.size(); i++) {
        const std::string file = (folder / (std::string(steps[i].name) + ".png")).string();
        steps[i].image->Write(file.c_str());
        if (Status::Error().Code != NoError) return 1;
        const bool equal = Equal(*steps[i].image, *recorded.Results()[i]);
        std::printf("%s: %s\n", file.c_str(), equal ? "the same from the engine" : "DIFFERENT from the engine");
        same = same && equal;
    }
    return same ? 0 : 1;
}
