#pragma once

#include <cstddef>
#include <memory>

#include <fftw3.h>

namespace platform::audio {

// FFTW's planner is not thread-safe; plans are made under one lock, run anywhere.
struct FftwFree {
    void operator()(void *p) const { fftwf_free(p); }
};
using RealBuffer = std::unique_ptr<float[], FftwFree>;
using ComplexBuffer = std::unique_ptr<fftwf_complex[], FftwFree>;

RealBuffer allocReal(size_t count);
ComplexBuffer allocComplex(size_t count);

// A real forward transform of n points, n/2+1 bins out, on arrays of its own.
class RealFft {
public:
    explicit RealFft(int n);
    ~RealFft();
    RealFft(const RealFft &) = delete;
    RealFft &operator=(const RealFft &) = delete;

    int size() const { return m_n; }
    float *input() { return m_in.get(); }
    fftwf_complex *output() { return m_out.get(); }
    void run() { fftwf_execute(m_plan); }

private:
    int m_n;
    RealBuffer m_in;
    ComplexBuffer m_out;
    fftwf_plan m_plan = nullptr;
};

// The inverse: n/2+1 bins in (overwritten by the run), n real points out, unscaled.
class InverseRealFft {
public:
    explicit InverseRealFft(int n);
    ~InverseRealFft();
    InverseRealFft(const InverseRealFft &) = delete;
    InverseRealFft &operator=(const InverseRealFft &) = delete;

    fftwf_complex *input() { return m_in.get(); }
    float *output() { return m_out.get(); }
    void run() { fftwf_execute(m_plan); }

private:
    int m_n;
    ComplexBuffer m_in;
    RealBuffer m_out;
    fftwf_plan m_plan = nullptr;
};

} // namespace platform::audio
