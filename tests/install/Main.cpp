// Runs an exported sequence and fails if its last call did.
#include "Tesk.h"

#include <cstdio>

void Process();

int main()
{
    Status::ErrorBehavior(PrintIt);
    Process();
    std::printf("code %d\n", Status::Error().Code);
    return Status::Error().Code;
}
