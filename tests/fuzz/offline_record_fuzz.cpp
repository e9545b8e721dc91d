#include "fuzz/fuzz_input.h"
#include "offline/offline_record.h"
#include "offline/origin_record.h"
#include "platform/digest.h"

using namespace depot;

// Reads the bytes as a record of either kind, as they are and with the seal that makes them one.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static_cast<void>(DecodeOfflineRecord({data, size}));
    static_cast<void>(DecodeOriginRecord({data, size}));
    OfflineBytes bytes(data, data + size);
    const Digest digest = DigestOf(bytes.data(), bytes.size());
    bytes.insert(bytes.end(), digest.begin(), digest.end());
    if (const auto record = DecodeOfflineRecord(bytes)) {
        test::Require(EncodeOfflineRecord(*record) == bytes);
    }
    if (const auto record = DecodeOriginRecord(bytes)) {
        test::Require(EncodeOriginRecord(*record) == bytes);
    }
    return 0;
}
