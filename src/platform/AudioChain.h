#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "MediaChain.h"

namespace ui {
class Control;
}

namespace platform {

// The player chain: giveamp3 -> MMRingBufferX1 -> eq -> MMWaveOutX1 -> MMConnectorX1, wired by
// `Input` and `Output` as the main window's design stores them. The output drives the chain: when
// it opens it follows its `Input` links back to the decoder, so only components of one family
// (all real or all fake) are wired together. The decoder carries the gain stage (volume and
// panning); the main window's tuning reaches each component at start-up.

// Audio output (`MMWaveOutX1`): the sound device, or a silent sink that keeps real time when no
// device opens.
class WaveOut : public MediaComponent {
public:
    virtual void setBufferSize(int value) = 0;
    virtual void setCallBackMode(int value) = 0;
    virtual void setLooping(bool on) = 0;
    virtual void setNumBuffers(int value) = 0;
    virtual void setTimeFormat(int value) = 0;
    // Opens the device on the format of the file the decoder names. A file that can't be read
    // raises the run-time error of the failure (53 missing, 321 not decodable).
    virtual void Open() = 0;
    // Starts playing from the decoder's position; `OnPlayStart` follows.
    virtual void Start() = 0;
    // Stops what is playing; `OnPlayStop` follows, as it does when the file ends.
    virtual void Stop() = 0;
    // Closes the device (stopping it first).
    virtual void Close() = 0;
    // A handle of the format in use, for the time text; 0 while closed.
    virtual int WaveFormatHandle() = 0;

    // Posted to the loop; an event of an output that is gone is dropped.
    std::function<void()> OnPlayStart;
    std::function<void()> OnPlayStop;
};

// Ring buffer between decoder and output (`MMRingBufferX1`).
class RingBuffer : public MediaComponent {
public:
    virtual void setBufferSize(int value) = 0;
    virtual void setLoopIfEmpty(bool on) = 0;
    virtual void setQueMode(int value) = 0;
    virtual void setWaitIfFull(bool on) = 0;
};

// The 15-band equaliser (`eq`).
class Equalizer : public MediaComponent {
public:
    virtual void setChannel(int value) = 0;
    virtual void setFFTLength(int value) = 0;
    virtual void setSampleRate(int value) = 0;
    virtual void setWindow(int value) = 0;
    // The band list: add a band from f1 to f2 hertz with a gain in dB; bands are indexed from 0.
    virtual void AddBand(double f1, double f2, double gain) = 0;
    virtual int BandCount() = 0;
    // A band that doesn't exist is error 9. A new gain is heard at once.
    virtual double BandGain(int index) = 0;
    virtual void setBandGain(int index, double gain) = 0;
    // Section of an ini file; a missing or garbled file leaves the gains. Saving replaces the
    // file atomically; a failure is the run-time error of the write (75).
    virtual void LoadFromIni(const std::string &file, const std::string &section) = 0;
    virtual void SaveToIni(const std::string &file, const std::string &section) = 0;
};

// Connector feeding the level meters and the spectrum (`MMConnectorX1`) with what is played.
class Connector : public MediaComponent {
public:
    virtual void setAutoConvert(bool on) = 0;
    virtual void setAutoTrigger(bool on) = 0;
    virtual void setEnterIdle(bool on) = 0;
    virtual void setRealTime(bool on) = 0;
    virtual void setRefreshOnStop(bool on) = 0;
    virtual void setSpeed(int value) = 0;
    virtual void setTriggerLevel(int value) = 0;
    virtual void setTriggerMode(int value) = 0;
    // The two level meters (ui::LevelMeter) that show what is played: left and right.
    virtual void setLevels(ui::Control *left, ui::Control *right) = 0;
    // The bar spectrum (ui::SpectrumView) that shows what is played.
    virtual void setSpectrum(ui::Control *spectrum) = 0;
};

// The sound card's input (`MMWaveInX`): it records what the card hears and hands it to its
// `Output`, a connector whose level meters show it. Without an input device it runs silent.
class WaveIn : public MediaComponent {
public:
    static constexpr int StateRunning = 4;
    virtual void setBufferSize(int bytes) = 0;
    virtual void setCallBackMode(int value) = 0;
    virtual void setDeviceID(int id) = 0;
    // 1 mono, 2 stereo.
    virtual void setChannels(int channels) = 0;
    virtual void setBitLength(int bits) = 0;
    virtual void setSampleRate(int rate) = 0;
    virtual void Start() = 0;
    virtual void Stop() = 0;
    // The bit StateRunning is set while it records.
    virtual int State() = 0;
};

// The MP3 decoder of the player (`giveamp3`), with the chain's gain stage.
class Mp3Decoder : public MediaComponent {
public:
    virtual void setDecryptKey(int value) = 0;
    virtual void setPanning(int value) = 0;
    virtual void setVolume(int value) = 0;
    virtual void setMpegTrailingHeader(int value) = 0;
    virtual void setFileName(const std::string &path) = 0;
    virtual std::string FileName() const = 0;
    // Position and length in milliseconds. Setting the position while playing is heard within
    // one buffer; while stopped it is where the next Start begins.
    virtual int32_t Position() = 0;
    virtual void setPosition(int32_t ms) = 0;
    virtual int32_t Length() = 0;
};

} // namespace platform
