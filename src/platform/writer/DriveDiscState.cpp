#include "DriveDiscState.h"

#include <cdio/cdio.h>
#include <cdio/memory.h>
#include <cdio/mmc.h>
#include <cdio/mmc_ll_cmds.h>

#include <array>
#include <filesystem>
#include <system_error>

namespace platform::writer {

namespace {

constexpr int senseNotReady = 0x2;
constexpr int senseUnitAttention = 0x6;
constexpr int ascMediumNotPresent = 0x3A;
constexpr int ascIncompatibleMedium = 0x30;

// The standard disc information block is 34 bytes; its first two give the length that follows.
constexpr size_t discInformationBytes = 34;

} // namespace

std::optional<int> discStateFromAnswer(const DiscInformationAnswer &answer)
{
    if (answer.succeeded) {
        if (answer.bytes.size() < 3)
            return std::nullopt;
        switch (answer.bytes[2] & 0x03) {
        case 0: // empty
        case 1: // incomplete: appendable
            return disc_state::writable;
        case 2:
            return disc_state::closed;
        default:
            return disc_state::notRecordable;
        }
    }
    if (answer.senseKey == senseNotReady)
        return answer.asc == ascMediumNotPresent || answer.asc == ascIncompatibleMedium ? disc_state::noDisc
                                                                                         : disc_state::notReady;
    if (answer.senseKey == senseUnitAttention)
        return disc_state::notReady;
    return std::nullopt;
}

std::optional<int> readDriveDiscState(const std::string &device, unsigned timeoutMs)
{
    // Only a device node can be a drive for libcdio; "b,t,l" addresses are wodim's own.
    std::error_code error;
    if (device.empty() || device.front() != '/' || !std::filesystem::exists(device, error))
        return std::nullopt;
    CdIo_t *cdio = cdio_open(device.c_str(), DRIVER_DEVICE);
    if (!cdio)
        return std::nullopt;
    DiscInformationAnswer answer;
    std::array<uint8_t, discInformationBytes> buffer{};
    const driver_return_code_t rc =
        mmc_read_disc_information(cdio, buffer.data(), buffer.size(), CDIO_MMC_READ_DISC_INFO_STANDARD, timeoutMs);
    if (rc == DRIVER_OP_SUCCESS) {
        answer.succeeded = true;
        answer.bytes.assign(buffer.begin(), buffer.end());
    } else {
        cdio_mmc_request_sense_t *sense = nullptr;
        if (mmc_last_cmd_sense(cdio, &sense) > 13 && sense) {
            answer.senseKey = sense->sense_key;
            answer.asc = sense->asc;
            answer.ascq = sense->ascq;
        }
        cdio_free(sense);
    }
    cdio_destroy(cdio);
    return discStateFromAnswer(answer);
}

} // namespace platform::writer
