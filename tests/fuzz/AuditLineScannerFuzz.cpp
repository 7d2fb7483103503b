// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "audit/AuditLineReader.h"
#include "audit/AuditLineScanner.h"

#include <vector>

using namespace bram;
using bram::fuzz::require;

/// The first byte of the input is what stands behind the line.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static AuditLineScanner scanner;
    static AuditRecordDecoder decoder;
    if (size == 0) {
        return 0;
    }
    std::vector<char> bytes(data + 1, data + size);
    bytes.resize(size - 1 + linePadding, static_cast<char>(data[0]));
    const std::string_view line(bytes.data(), size - 1);
    const AuditEventView *event = scanner.scan(line);
    const auto record = decoder.decode(line);
    require((event != nullptr) == record.has_value(), "both take the line or neither");
    if (record) {
        require(*event == AuditEventBytes(*record).view(), "both read the same");
    }
    return 0;
}
