#include <algorithm>

#include "fuzz/fuzz_input.h"
#include "model/working_copy_record.h"
#include "platform/checksum.h"

using namespace depot;

// Reads the bytes as a record, as they are and with the seal that makes them one.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    WorkingCopyRecordBytes bytes = {};
    std::copy_n(data, std::min(size, bytes.size()), bytes.begin());
    DecodeWorkingCopy(bytes);
    constexpr std::size_t kSealAt = kWorkingCopyRecordBytes - sizeof(std::uint64_t);
    const std::uint64_t seal = ChecksumOf(bytes.data(), kSealAt);
    for (std::size_t index = 0; index < sizeof(seal); ++index) {
        bytes[kSealAt + index] = static_cast<std::uint8_t>(seal >> (8 * index));
    }
    if (const auto record = DecodeWorkingCopy(bytes)) {
        test::Require(IsWorkingCopyName(record->file));
        test::Require(EncodeWorkingCopy(*record) == bytes);
    }
    IsWorkingCopyJournal({reinterpret_cast<const char*>(data), size});
    return 0;
}
