#include "PlayerRenderer.h"

#include <algorithm>
#include <cstring>

#include "FirConvolver.h"
#include "SoundAnalyser.h"

namespace platform::audio {

namespace {

constexpr size_t ScratchFrames = 4096;

} // namespace

PlayerRenderer::PlayerRenderer(SampleRing &ring, StreamMarks &marks, PlayPosition &position, FirConvolver *equalizer,
                               SoundAnalyser *analyser)
    : m_ring(ring)
    , m_marks(marks)
    , m_position(position)
    , m_equalizer(equalizer)
    , m_analyser(analyser)
    , m_delay(equalizer ? static_cast<size_t>(equalizer->delay()) : 0)
    , m_scratch(ScratchFrames * 2)
{
    restart(position.heard.load());
}

void PlayerRenderer::restart(int64_t position)
{
    if (m_equalizer)
        m_equalizer->reset();
    m_primeLeft = m_delay;
    m_tailLeft = m_delay;
    m_inputs = 0;
    m_outputs = 0;
    m_base = Base{0, position};
    m_loopCount = 0;
    m_position.heard.store(position, std::memory_order_relaxed);
}

void PlayerRenderer::applySeeks(size_t frames)
{
    // The newest seek waiting wins; the marks before it are of sound that is dropped.
    const size_t waiting = m_marks.size();
    size_t lastSeek = waiting;
    for (size_t i = 0; i < waiting; ++i) {
        if (m_marks.peek(i).dropBefore)
            lastSeek = i;
    }
    if (lastSeek == waiting)
        return;
    const StreamMark mark = m_marks.peek(lastSeek);
    // The sound before the seek plays on until the decoder has a buffer from the new place,
    // so a seek never leaves a gap.
    if (m_ring.writtenSeen() - mark.at < frames + m_delay && !m_ring.ended())
        return;
    m_marks.pop(lastSeek + 1);
    m_ring.skipTo(mark.at);
    restart(mark.position);
    m_finished = false;
    m_position.seeksDone.store(mark.generation, std::memory_order_release);
}

void PlayerRenderer::advancePosition(size_t frames)
{
    m_outputs += frames;
    size_t used = 0;
    while (used < m_loopCount && m_loops[used].output <= m_outputs)
        m_base = m_loops[used++];
    if (used > 0) {
        std::copy(m_loops.begin() + static_cast<std::ptrdiff_t>(used),
                  m_loops.begin() + static_cast<std::ptrdiff_t>(m_loopCount), m_loops.begin());
        m_loopCount -= used;
    }
    m_position.heard.store(m_base.position + static_cast<int64_t>(m_outputs - m_base.output),
                           std::memory_order_relaxed);
}

PlayerRenderer::Result PlayerRenderer::render(float *out, size_t frames)
{
    Result result;
    size_t done = 0;
    applySeeks(frames);
    while (done < frames && !m_finished) {
        // A loop back to the top takes effect at its place in the sound.
        if (m_marks.size() > 0) {
            const StreamMark &mark = m_marks.peek(0);
            if (!mark.dropBefore && m_ring.readCount() >= mark.at) {
                const Base loop{m_inputs, mark.position};
                if (m_loopCount == m_loops.size()) {
                    m_base = m_loops[0];
                    std::copy(m_loops.begin() + 1, m_loops.end(), m_loops.begin());
                    --m_loopCount;
                }
                m_loops[m_loopCount++] = loop;
                m_marks.pop(1);
                continue;
            }
        }
        size_t want = std::min(frames - done + m_primeLeft, ScratchFrames);
        if (m_marks.size() > 0 && !m_marks.peek(0).dropBefore)
            want = std::min<size_t>(want, m_marks.peek(0).at - m_ring.readCount());
        size_t got = m_ring.read(m_scratch.data(), want);
        if (got == 0) {
            if (!m_ring.drained() || m_marks.size() > 0) {
                m_underrun += frames - done; // the decoder is late: silence, and on from here next time
                break;
            }
            if (m_tailLeft == 0) {
                m_finished = true;
                break;
            }
            got = std::min(want, m_tailLeft);
            std::fill(m_scratch.begin(), m_scratch.begin() + static_cast<std::ptrdiff_t>(got * 2), 0.0f);
            m_tailLeft -= got;
        }
        if (m_equalizer)
            m_equalizer->process(m_scratch.data(), got);
        m_inputs += got;
        const size_t skip = std::min(m_primeLeft, got);
        m_primeLeft -= skip;
        const size_t produced = got - skip;
        std::memcpy(out + done * 2, m_scratch.data() + skip * 2, produced * 2 * sizeof(float));
        done += produced;
        advancePosition(produced);
    }
    std::fill(out + done * 2, out + frames * 2, 0.0f);
    if (m_analyser)
        m_analyser->feed(out, frames);
    result.sound = done;
    result.finished = m_finished;
    return result;
}

} // namespace platform::audio
