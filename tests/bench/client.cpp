#include "bench/client.h"

#include <cstdio>
#include <cstdlib>

namespace depot::bench {

Api CreateApi() {
    void* created = nullptr;
    if (FAILED(CoCreateInstance(CLSID_DepotIntrApi, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IDepotIntrApi, &created))) {
        std::fprintf(stderr, "DepotIntr is not registered.\n");
        std::exit(1);
    }
    return Api(static_cast<IDepotIntrApi*>(created));
}

}  // namespace depot::bench
