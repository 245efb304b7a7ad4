#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "AudioChain.h"
#include "Http.h"
#include "Imaging.h"
#include "CdReader.h"
#include "MediaChain.h"
#include "SettingsStore.h"
#include "TrackChecksums.h"
#include "Shell.h"
#include "SystemInfo.h"
#include "WriterEngine.h"

namespace platform {

// How a window gets its closed components: one maker per component family. The program and
// the scenario driver fill these in; a maker left empty means the component isn't there,
// and a window's use of it is error 91, passed over where the window's error rule says so.
struct Components {
    std::function<std::unique_ptr<SettingsStore>()> settingsStore;
    std::function<std::unique_ptr<SystemInfo>()> systemInfo;
    std::function<std::unique_ptr<WriterEngine>()> writerEngine;
    std::function<std::unique_ptr<WaveOut>()> waveOut;
    std::function<std::unique_ptr<RingBuffer>()> ringBuffer;
    std::function<std::unique_ptr<Equalizer>()> equalizer;
    std::function<std::unique_ptr<Connector>()> connector;
    std::function<std::unique_ptr<Mp3Decoder>()> mp3Decoder;
    // The decoding and converting chains (burn, converters, extraction).
    std::function<std::unique_ptr<AudioFile>()> audioFile;
    std::function<std::unique_ptr<Trigger>()> trigger;
    std::function<std::unique_ptr<WaveFile>()> waveFile;
    std::function<std::unique_ptr<FormatConverter>()> formatConverter;
    // The wave formats a converter's target file can be written in, for the format chooser.
    std::function<std::vector<WaveFormat>()> writableWaveFormats;
    std::function<std::unique_ptr<Shell>()> shell;
    // The add-on catalogue's download (`ickHTTP`).
    std::function<std::unique_ptr<HttpDownload>()> httpDownload;
    // CD extraction: the reader, the sound card's input and the store of the extraction tool's
    // own key, kept apart from `settingsStore`.
    std::function<std::unique_ptr<CdReader>()> cdReader;
    std::function<std::unique_ptr<WaveIn>()> waveIn;
    std::function<std::unique_ptr<SettingsStore>()> extractionStore;
    // Normalises a wave file in place to `level` percent of full scale (`NormalizeFile`), with
    // progress(percent, phase): phase 0 while scanning, 1 while rewriting. The file is replaced
    // only when the rewrite is complete. Empty: the library isn't there (error 53).
    std::function<void(const std::string &file, int32_t level, const std::function<void(int32_t, int32_t)> &progress)>
        normalizeFile;
    // The checksums of a copied track's wave file, for the rip log; empty when it can't be read.
    // Unset: the log goes without them.
    std::function<std::optional<TrackChecksums>(const std::string &file, bool firstTrack, bool lastTrack)>
        checksumWaveFile;
    // The cover designer: image controls, the clipboard they share, the scanner and the printer.
    std::function<std::unique_ptr<ImageControl>()> imageControl;
    std::function<std::shared_ptr<ImageClipboard>()> imageClipboard;
    std::function<std::unique_ptr<Scanner>()> scanner;
    std::function<std::unique_ptr<Printer>()> printer;
};

// A component of a window: use through -> is error 91 when the component isn't there.
template <class T>
class Component {
public:
    Component() = default;
    template <class Maker>
    explicit Component(const Maker &make) : m_object(make ? make() : nullptr) {}
    T *operator->() const;
    T &operator*() const { return *operator->(); }
    T *get() const { return m_object.get(); }
    explicit operator bool() const { return m_object != nullptr; }

private:
    std::unique_ptr<T> m_object;
};

} // namespace platform

#include "runtime/RuntimeError.h"

template <class T>
T *platform::Component<T>::operator->() const
{
    if (!m_object)
        rt::raise(rt::ErrObjectVariableNotSet);
    return m_object.get();
}
