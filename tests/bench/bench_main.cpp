// Measures the component against the raw system calls that do the same work.
#include "bench/benches.h"

int main() {
    CoInitialize(nullptr);
    {
        const depot::bench::Api api = depot::bench::CreateApi();
        depot::bench::MeasureSessions(api.get());
        depot::bench::MeasureValues(api.get());
        depot::bench::MeasureMacros();
        depot::bench::MeasureDirectory();
        depot::bench::MeasureWorkingCopies(api.get());
        depot::bench::MeasureListings();
        depot::bench::MeasureTransfers();
    }
    CoUninitialize();
    return 0;
}
