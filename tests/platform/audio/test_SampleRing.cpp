// The ring between the decoding thread and the device, and the device's side of it: under a
// slow, stalling decoder nothing is lost, repeated or reordered; a late decoder costs silence.
#include <atomic>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/audio/FirConvolver.h"
#include "platform/audio/PlayPosition.h"
#include "platform/audio/PlayerRenderer.h"
#include "platform/audio/SampleRing.h"
#include "platform/audio/StreamMarks.h"

namespace {

using platform::audio::FirConvolver;
using platform::audio::PlayerRenderer;
using platform::audio::PlayPosition;
using platform::audio::SampleRing;
using platform::audio::StreamMark;
using platform::audio::StreamMarks;

// Frame n carries the value (n + 1) / 2^20 on both channels: exact in a float, never 0.
float valueOf(size_t n)
{
    return static_cast<float>(n + 1) / static_cast<float>(1 << 20);
}

// A producer that writes `total` frames in uneven pieces and now and then stalls.
std::thread slowProducer(SampleRing &ring, size_t total, std::atomic<bool> &stop, bool endRing)
{
    return std::thread([&ring, total, &stop, endRing] {
        std::mt19937 rng(11);
        std::uniform_int_distribution<size_t> piece(1, 3000);
        std::uniform_int_distribution<int> pause(0, 9);
        std::vector<float> buffer;
        size_t next = 0;
        while (next < total && !stop) {
            const size_t n = std::min(piece(rng), total - next);
            buffer.resize(n * 2);
            for (size_t i = 0; i < n; ++i)
                buffer[2 * i] = buffer[2 * i + 1] = valueOf(next + i);
            size_t done = 0;
            while (done < n && !stop) {
                done += ring.write(buffer.data() + done * 2, n - done);
                if (done < n)
                    std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
            next += done;
            const int p = pause(rng);
            if (p == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(15)); // longer than a buffer
            else if (p < 3)
                std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
        if (endRing)
            ring.setEnded(true);
    });
}

TEST(SampleRing, ReadsBackEveryFrameOnceInOrder)
{
    SampleRing ring(5000, 2);
    const size_t total = 400000;
    std::atomic<bool> stop{false};
    std::thread producer = slowProducer(ring, total, stop, true);
    std::mt19937 rng(5);
    std::uniform_int_distribution<size_t> piece(1, 2500);
    std::vector<float> buffer(2500 * 2);
    size_t expected = 0;
    bool ok = true;
    while (!ring.drained() && ok) {
        const size_t got = ring.read(buffer.data(), piece(rng));
        for (size_t i = 0; i < got && ok; ++i) {
            ok = buffer[2 * i] == valueOf(expected) && buffer[2 * i + 1] == valueOf(expected);
            ++expected;
        }
        if (got == 0)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    stop = true;
    producer.join();
    EXPECT_TRUE(ok) << "frame " << expected - 1;
    EXPECT_EQ(expected, total);
}

TEST(SampleRing, NeverTakesMoreThanItHolds)
{
    SampleRing ring(100, 2);
    std::vector<float> in(300 * 2, 1.0f);
    EXPECT_EQ(ring.write(in.data(), 300), 100u);
    EXPECT_EQ(ring.writable(), 0u);
    std::vector<float> out(300 * 2);
    EXPECT_EQ(ring.read(out.data(), 60), 60u);
    EXPECT_EQ(ring.write(in.data(), 300), 60u);
    EXPECT_EQ(ring.readable(), 100u);
    ring.skipTo(ring.written() - 10);
    EXPECT_EQ(ring.readable(), 10u);
}

// The device's side, pulling buffers at a steady pace from a decoder that stalls: the sound that
// comes out, silences taken away, is the decoder's, frame for frame, through the equaliser's
// delay and out to its last frame.
TEST(PlayerRenderer, SlowDecoderLosesAndRepeatsNothing)
{
    SampleRing ring(8192, 2);
    StreamMarks marks;
    PlayPosition position;
    FirConvolver flat(1147, 2, 1012); // a pure delay: what goes in comes out
    PlayerRenderer renderer(ring, marks, position, &flat, nullptr);
    const size_t total = 300000;
    std::atomic<bool> stop{false};
    std::thread producer = slowProducer(ring, total, stop, true);

    std::vector<float> out(1012 * 2);
    std::vector<float> sound;
    bool finished = false;
    for (int round = 0; round < 100000 && !finished; ++round) {
        const PlayerRenderer::Result r = renderer.render(out.data(), 1012);
        sound.insert(sound.end(), out.begin(), out.begin() + static_cast<std::ptrdiff_t>(r.sound * 2));
        for (size_t i = r.sound * 2; i < out.size(); ++i)
            ASSERT_EQ(out[i], 0.0f) << "after the sound comes silence";
        finished = r.finished;
        std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
    stop = true;
    producer.join();
    ASSERT_TRUE(finished);
    EXPECT_GT(renderer.underrunFrames(), 0u) << "the decoder never fell behind: the test proves nothing";

    // Silence within the sound is the late decoder's; the rest must be the sequence.
    size_t expected = 0;
    for (size_t i = 0; i < sound.size() / 2; ++i) {
        if (sound[2 * i] == 0.0f)
            continue;
        ASSERT_EQ(sound[2 * i], valueOf(expected)) << "frame " << expected;
        ASSERT_EQ(sound[2 * i + 1], valueOf(expected));
        ++expected;
    }
    EXPECT_EQ(expected, total);
    EXPECT_EQ(position.heard.load(), static_cast<int64_t>(total));
}

TEST(PlayerRenderer, ASeekDropsWhatCameBeforeIt)
{
    SampleRing ring(20000, 2);
    StreamMarks marks;
    PlayPosition position;
    PlayerRenderer renderer(ring, marks, position, nullptr, nullptr);
    std::vector<float> a(5000 * 2, 0.25f);
    std::vector<float> b(5000 * 2, 0.5f);
    ring.write(a.data(), 5000);
    std::vector<float> out(1000 * 2);
    renderer.render(out.data(), 1000);
    EXPECT_EQ(out[0], 0.25f);
    EXPECT_EQ(position.heard.load(), 1000);

    position.askSeek(88200);
    ASSERT_TRUE(marks.push({ring.written(), 88200, true, position.seeksAsked.load()}));
    ring.write(b.data(), 5000);
    renderer.render(out.data(), 1000);
    EXPECT_EQ(out[0], 0.5f) << "the rest before the seek is dropped";
    EXPECT_EQ(position.heard.load(), 88200 + 1000);
    EXPECT_EQ(position.seeksDone.load(), position.seeksAsked.load());
}

TEST(PlayerRenderer, ALoopBackToTheTopMovesThePositionAtItsPlace)
{
    SampleRing ring(20000, 2);
    StreamMarks marks;
    PlayPosition position;
    position.heard = 7000;
    PlayerRenderer renderer(ring, marks, position, nullptr, nullptr);
    std::vector<float> tail(500 * 2, 0.25f);
    std::vector<float> top(3000 * 2, 0.5f);
    ring.write(tail.data(), 500);
    ASSERT_TRUE(marks.push({ring.written(), 0, false, 0}));
    ring.write(top.data(), 3000);
    std::vector<float> out(1000 * 2);
    renderer.render(out.data(), 1000);
    EXPECT_EQ(out[499 * 2], 0.25f);
    EXPECT_EQ(out[500 * 2], 0.5f);
    EXPECT_EQ(position.heard.load(), 500) << "500 frames past the top";
}

} // namespace
