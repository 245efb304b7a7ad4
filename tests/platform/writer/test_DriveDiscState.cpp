#include <gtest/gtest.h>

#include "platform/writer/DriveDiscState.h"

using platform::writer::DiscInformationAnswer;
using platform::writer::discStateFromAnswer;
namespace disc_state = platform::writer::disc_state;

namespace {

// A READ DISC INFORMATION answer as a CD writer gives it: 34 bytes, the length (32) first, then
// byte 2 with the erasable bit (4), the last session's state (bits 2-3) and the disc's (bits 0-1).
DiscInformationAnswer answered(uint8_t statusByte, uint8_t firstTrack = 1, uint8_t sessions = 1)
{
    DiscInformationAnswer a;
    a.succeeded = true;
    a.bytes.assign(34, 0);
    a.bytes[1] = 32;
    a.bytes[2] = statusByte;
    a.bytes[3] = firstTrack;
    a.bytes[4] = sessions;
    a.bytes[5] = firstTrack;
    a.bytes[6] = firstTrack;
    a.bytes[7] = 0x20; // unrestricted use
    return a;
}

DiscInformationAnswer refused(int key, int asc, int ascq)
{
    DiscInformationAnswer a;
    a.senseKey = key;
    a.asc = asc;
    a.ascq = ascq;
    return a;
}

} // namespace

TEST(DriveDiscState, AnEmptyCdRIsWritable)
{
    // Disc status 0 (empty), last session empty.
    EXPECT_EQ(discStateFromAnswer(answered(0x00)), disc_state::writable);
    // A blank CD-RW: erasable as well.
    EXPECT_EQ(discStateFromAnswer(answered(0x10)), disc_state::writable);
}

TEST(DriveDiscState, AnIncompleteDiscTakesMoreTracks)
{
    // A track written with -nofix: disc incomplete (1), last session incomplete (1 << 2).
    EXPECT_EQ(discStateFromAnswer(answered(0x05, 1, 1)), disc_state::writable);
    // Several closed sessions and an empty one after them.
    EXPECT_EQ(discStateFromAnswer(answered(0x01, 1, 3)), disc_state::writable);
}

TEST(DriveDiscState, AClosedDiscIsNotWritable)
{
    // Disc complete (2), last session complete (3 << 2): finalised.
    EXPECT_EQ(discStateFromAnswer(answered(0x0E)), disc_state::closed);
    // A finalised CD-RW must be blanked before it takes tracks again.
    EXPECT_EQ(discStateFromAnswer(answered(0x1E)), disc_state::closed);
    EXPECT_GT(disc_state::closed, 0);
}

TEST(DriveDiscState, ARandomAccessMediumIsNotForAudio)
{
    EXPECT_EQ(discStateFromAnswer(answered(0x13)), disc_state::notRecordable);
    EXPECT_GT(disc_state::notRecordable, 0);
}

TEST(DriveDiscState, NoDiscOrAnOpenTrayIsNegative)
{
    // NOT READY, MEDIUM NOT PRESENT: tray closed (01), tray open (02), no qualifier (00).
    EXPECT_EQ(discStateFromAnswer(refused(0x2, 0x3A, 0x01)), disc_state::noDisc);
    EXPECT_EQ(discStateFromAnswer(refused(0x2, 0x3A, 0x02)), disc_state::noDisc);
    EXPECT_EQ(discStateFromAnswer(refused(0x2, 0x3A, 0x00)), disc_state::noDisc);
    // INCOMPATIBLE MEDIUM INSTALLED: nothing a writer can use.
    EXPECT_EQ(discStateFromAnswer(refused(0x2, 0x30, 0x00)), disc_state::noDisc);
    EXPECT_LT(disc_state::noDisc, 0);
}

TEST(DriveDiscState, ADiscStillLoadingIsNotReady)
{
    // LOGICAL UNIT IS IN PROCESS OF BECOMING READY.
    EXPECT_EQ(discStateFromAnswer(refused(0x2, 0x04, 0x01)), disc_state::notReady);
    // LONG WRITE IN PROGRESS.
    EXPECT_EQ(discStateFromAnswer(refused(0x2, 0x04, 0x08)), disc_state::notReady);
    // UNIT ATTENTION, NOT READY TO READY CHANGE, MEDIUM MAY HAVE CHANGED: asked again later.
    EXPECT_EQ(discStateFromAnswer(refused(0x6, 0x28, 0x00)), disc_state::notReady);
    EXPECT_GT(disc_state::notReady, 0);
}

TEST(DriveDiscState, AnAnswerThatTellsNothingIsLeftToWodim)
{
    // ILLEGAL REQUEST, INVALID COMMAND OPERATION CODE: a drive without the command.
    EXPECT_FALSE(discStateFromAnswer(refused(0x5, 0x20, 0x00)));
    // No sense at all (the command could not be sent).
    EXPECT_FALSE(discStateFromAnswer(DiscInformationAnswer{}));
    // An answer cut before its status byte.
    DiscInformationAnswer cut = answered(0x00);
    cut.bytes.resize(2);
    EXPECT_FALSE(discStateFromAnswer(cut));
}

TEST(DriveDiscState, ANameThatIsNoDriveIsNotAsked)
{
    EXPECT_FALSE(platform::writer::readDriveDiscState("1,0,0"));
    EXPECT_FALSE(platform::writer::readDriveDiscState(""));
    EXPECT_FALSE(platform::writer::readDriveDiscState("/nonexistent/sr9"));
    // A file is no drive: libcdio opens no MMC device on it.
    EXPECT_FALSE(platform::writer::readDriveDiscState("/etc/hostname"));
}
