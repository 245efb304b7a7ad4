#pragma once

#include <string>

namespace ui {
class Control;
}

namespace platform {

// The player chain's components, with the tuning the main window applies at start-up.
// Their playing members arrive with the player.

// Audio output (`MMWaveOutX1`).
class WaveOut {
public:
    virtual ~WaveOut() = default;
    virtual void setBufferSize(int value) = 0;
    virtual void setCallBackMode(int value) = 0;
    virtual void setLooping(bool on) = 0;
    virtual void setNumBuffers(int value) = 0;
    virtual void setTimeFormat(int value) = 0;
    // Stops what is playing.
    virtual void Stop() = 0;
};

// Ring buffer between decoder and output (`MMRingBufferX1`).
class RingBuffer {
public:
    virtual ~RingBuffer() = default;
    virtual void setBufferSize(int value) = 0;
    virtual void setLoopIfEmpty(bool on) = 0;
    virtual void setQueMode(int value) = 0;
    virtual void setWaitIfFull(bool on) = 0;
};

// The 15-band equaliser (`eq`).
class Equalizer {
public:
    virtual ~Equalizer() = default;
    virtual void setChannel(int value) = 0;
    virtual void setFFTLength(int value) = 0;
    virtual void setSampleRate(int value) = 0;
    virtual void setWindow(int value) = 0;
    // The band list: add a band from f1 to f2 hertz with a gain; bands are indexed from 0.
    virtual void AddBand(double f1, double f2, double gain) = 0;
    virtual int BandCount() = 0;
    // A band that doesn't exist is error 9.
    virtual double BandGain(int index) = 0;
    virtual void setBandGain(int index, double gain) = 0;
    // Section of an ini file; a missing file leaves the gains.
    virtual void LoadFromIni(const std::string &file, const std::string &section) = 0;
    virtual void SaveToIni(const std::string &file, const std::string &section) = 0;
};

// Connector feeding the level meters and spectrum (`MMConnectorX1`).
class Connector {
public:
    virtual ~Connector() = default;
    virtual void setAutoConvert(bool on) = 0;
    virtual void setAutoTrigger(bool on) = 0;
    virtual void setEnterIdle(bool on) = 0;
    virtual void setRealTime(bool on) = 0;
    virtual void setRefreshOnStop(bool on) = 0;
    virtual void setSpeed(int value) = 0;
    virtual void setTriggerLevel(int value) = 0;
    virtual void setTriggerMode(int value) = 0;
    // The two level meters that show what is played (the listening room's `Level` array).
    virtual void setLevels(ui::Control *left, ui::Control *right) = 0;
};

// The MP3 decoder of the player (`giveamp3`).
class Mp3Decoder {
public:
    virtual ~Mp3Decoder() = default;
    virtual void setDecryptKey(int value) = 0;
    virtual void setPanning(int value) = 0;
    virtual void setVolume(int value) = 0;
};

} // namespace platform
