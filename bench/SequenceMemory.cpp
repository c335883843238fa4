// Whether a long sequence that runs again and again grows: prints the resident size after each ten runs.
#include "engine/Engine.h"
#include "foundation/Status.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <unistd.h>
#include <utility>

namespace {

using namespace Tesk;

constexpr int settled = 10;
constexpr double megabyte = 1024.0 * 1024.0;

double ResidentMegabytes()
{
    long total = 0, resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &total, &resident) != 2) resident = 0;
        std::fclose(file);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / megabyte;
}

Operation& Append(Engine& engine, const wchar_t* label)
{
    auto made = std::make_unique<Operation>();
    engine.UnreserveVariables();
    const int method = Engine::FindMethod(nullptr, nullptr, label);
    if (method < 0) {
        std::fprintf(stderr, "no method %ls\n", label);
        std::exit(2);
    }
    made->Set(engine, method, false);
    Operation& operation = engine.InsertOperation(std::move(made));
    engine.FillOperation(engine.NumOperations() - 1);
    for (Arg& argument : operation.Args)
        argument.Visible = true;
    return operation;
}

} // namespace

int main(int argc, char** argv)
{
    const int operations = argc > 1 ? std::atoi(argv[1]) : 50, runs = argc > 2 ? std::atoi(argv[2]) : 100;
    const int width = argc > 3 ? std::atoi(argv[3]) : 4000, height = argc > 4 ? std::atoi(argv[4]) : 3000;
    Status::ErrorBehavior(IgnoreIt);
    Status::SIMDLevel(Status::BestSIMDLevel());
    Status::Shallow = true;
    Engine::Trace = nullptr;
    Engine engine;
    Operation& source = Append(engine, L"Constant - Gray");
    const int values[] = {width, height};
    for (std::size_t k = 0; k < 2; k++)
        static_cast<Var<int>&>(*source.Args[k].Variable).Value = values[k];
    const wchar_t* const labels[] = {L"Invert", L"Const + Image", L"Image + Image", L"Threshold"};
    for (int i = 1; i < operations; i++)
        Append(engine, labels[i % 4]);
    std::printf("%d operations on %d x %d\n", operations, width, height);
    double first = 0;
    for (int run = 1; run <= runs; run++) {
        auto& value = static_cast<Var<int>&>(*source.Args[2].Variable);
        value.Value = run % 256;
        engine.ChangeVariable(&value);
        const auto start = std::chrono::steady_clock::now();
        engine.Execute();
        const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
        if (Status::Error().Code != NoError) {
            std::fprintf(stderr, "%s\n", Status::AsciiError());
            return 1;
        }
        // By then the allocator holds the blocks that it goes on handing round.
        if (run == settled) first = ResidentMegabytes();
        if (run == 1 || run == 2 || run % 10 == 0)
            std::printf("run %4d: %8.1f ms, resident %8.1f MB\n", run, time.count(), ResidentMegabytes());
    }
    if (runs > settled) std::printf("growth since run %d: %+.1f MB\n", settled, ResidentMegabytes() - first);
    return 0;
}
