#pragma once

#include <memory>
#include <string>
#include <vector>

#include "FakeComponents.h"

namespace platform::fake {

inline std::string truthText(bool on)
{
    return on ? "True" : "False";
}

// The common part of the fakes: each property set is logged under the component's name.
class Recorder {
public:
    Recorder(std::shared_ptr<FakeWorld> w, std::string component) : m_world(std::move(w)), m_component(std::move(component)) {}

protected:
    void record(const std::string &property, const std::string &value)
    {
        m_world->properties[m_component + "." + property] = value;
        m_world->calls.push_back(m_component + "." + property + " = " + value);
    }
    void record(const std::string &property, int value) { record(property, std::to_string(value)); }
    void call(const std::string &what) { m_world->calls.push_back(m_component + "." + what); }
    FakeWorld &world() { return *m_world; }
    // A component whose role shows only in its wiring names itself once wired.
    void rename(std::string component) { m_component = std::move(component); }
    const std::shared_ptr<FakeWorld> &worldPtr() const { return m_world; }

private:
    std::shared_ptr<FakeWorld> m_world;
    std::string m_component;
};

std::unique_ptr<WriterEngine> makeFakeWriter(std::shared_ptr<FakeWorld> world);
std::unique_ptr<AudioFile> makeFakeAudioFile(std::shared_ptr<FakeWorld> world);
std::unique_ptr<Trigger> makeFakeTrigger(std::shared_ptr<FakeWorld> world);
std::unique_ptr<WaveFile> makeFakeWaveFile(std::shared_ptr<FakeWorld> world);
std::unique_ptr<FormatConverter> makeFakeFormatConverter(std::shared_ptr<FakeWorld> world);
std::unique_ptr<WaveOut> makeFakeWaveOut(std::shared_ptr<FakeWorld> world);
std::unique_ptr<RingBuffer> makeFakeRingBuffer(std::shared_ptr<FakeWorld> world);
std::unique_ptr<Equalizer> makeFakeEqualizer(std::shared_ptr<FakeWorld> world);
std::unique_ptr<Connector> makeFakeConnector(std::shared_ptr<FakeWorld> world);
std::unique_ptr<Mp3Decoder> makeFakeMp3Decoder(std::shared_ptr<FakeWorld> world);
// Every format a chooser offers: the formats of a machine whose libraries write them all.
std::vector<WaveFormat> fakeWaveFormats();

} // namespace platform::fake
