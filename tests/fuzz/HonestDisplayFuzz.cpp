// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"
#include "model/HonestProperties.h"

using namespace bram;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString fault = test::dishonesty(fuzz::toText(fuzz::toBytes(data, size)));
    fuzz::require(fault.isEmpty(), fault.toUtf8().constData());
    return 0;
}
