// The single-instance register as a whole, filled with bytes that another
// process could have written: the header checks and every slot's reading
// stay inside the register and agree with each other.

#include "FuzzSupport.h"
#include "KDSingleApplicationGuard_p.h"

#include <algorithm>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool silenced = (fuzz::silenceQtMessages(), true);
    (void)silenced;

    // Short inputs are repeated, so that every slot gets bytes of its own.
    auto reg = std::make_unique<InstanceRegister>();
    auto* bytes = reinterpret_cast<std::uint8_t*>(reg.get());
    std::memset(bytes, 0, sizeof(InstanceRegister));
    for (std::size_t filled = 0; size > 0 && filled < sizeof(InstanceRegister); filled += size)
        std::memcpy(bytes + filled, data, std::min(size, sizeof(InstanceRegister) - filled));

    reg->isValid();
    reg->policy();
    reg->version();
    for (const ProcessInfo& slot : reg->processInfo) {
        FUZZ_CHECK(!(slot.isFree() && slot.isTaken()));
        bool truncated = false;
        // Each argument takes its two length bytes at least.
        FUZZ_CHECK(slot.arguments(&truncated).size() <= ProcessInfo::ArgumentBytes / 2);
    }
    return 0;
}
