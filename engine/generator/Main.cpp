// The catalogue's generator, and the way to look at the tree from a shell.
#include "Catalogue.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

using namespace TeskGenerator;

/// Writes a product only if it changed, so that a rebuild stays small.
template <typename Writer>
void WriteIfChanged(const std::filesystem::path& path, Writer writer)
{
    std::ostringstream text;
    writer(text);
    std::ifstream old(path, std::ios::binary);
    std::ostringstream former;
    former << old.rdbuf();
    if (old && former.str() == text.str()) return;
    std::ofstream(path, std::ios::binary) << text.str();
}

int Usage()
{
    std::cerr << "usage: tesk-catalogue FOLDER print            the tree, a line each node\n"
                 "       tesk-catalogue FOLDER node INDEX       one node in full\n"
                 "       tesk-catalogue FOLDER count            nodes by kind, arguments by variant, flags\n"
                 "       tesk-catalogue FOLDER generate OUTPUT  the generated sources\n"
                 "       tesk-catalogue FOLDER reference FILE   the API reference\n";
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) return Usage();
    try {
        const Catalogue catalogue(argv[1]);
        const std::string command = argv[2];
        const auto faults = catalogue.Faults();
        if (command == "print") {
            PrintTree(catalogue, std::cout, -1);
        } else if (command == "count") {
            PrintCounts(catalogue, std::cout);
            for (const auto& fault : faults)
                std::cout << fault << '\n';
        } else if (command == "node" && argc > 3) {
            PrintTree(catalogue, std::cout, std::atoi(argv[3]));
        } else if (command == "reference" && argc > 3) {
            WriteIfChanged(argv[3], [&](std::ostream& out) { WriteReference(catalogue, out); });
        } else if (command == "generate" && argc > 3) {
            for (const auto& fault : faults)
                std::cerr << fault << '\n';
            if (!faults.empty()) return 1;
            const std::filesystem::path folder = argv[3];
            std::filesystem::create_directories(folder / "engine");
            WriteIfChanged(folder / "engine/TypeTable.h", [&](std::ostream& out) { WriteTypeTable(catalogue, out); });
            WriteIfChanged(folder / "Tree.cpp", [&](std::ostream& out) { WriteTree(catalogue, out); });
            WriteIfChanged(folder / "Dispatch.cpp", [&](std::ostream& out) { WriteDispatch(catalogue, out); });
            WriteIfChanged(folder / "Classes.cpp", [&](std::ostream& out) { WriteClasses(catalogue, out); });
            WriteIfChanged(folder / "EnumChecks.cpp", [&](std::ostream& out) { WriteEnumChecks(catalogue, out); });
            int pending = 0;
            for (const Node* node : catalogue.Nodes())
                pending += node->kind == Kind::Method && node->pending;
            std::cout << "catalogue: " << catalogue.Nodes().size() << " nodes, " << pending << " methods pending\n";
        } else {
            return Usage();
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
