#include "fuzz/fuzz_input.h"
#include "offline/offline_record.h"
#include "platform/digest.h"

using namespace depot;

// Reads the bytes as a record, as they are and with the seal that makes them one.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_cast<void>(DecodeOfflineRecord({data, size}));
    OfflineBytes bytes(data, data + size);
    const Digest digest = DigestOf(bytes.data(), bytes.size());
    bytes.insert(bytes.end(), digest.begin(), digest.end());
    if (const auto record = DecodeOfflineRecord(bytes)) {
        test::Require(EncodeOfflineRecord(*record) == bytes);
    }
    return 0;
}
