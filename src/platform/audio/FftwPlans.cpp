#include "FftwPlans.h"

#include <cstring>
#include <mutex>
#include <new>

namespace platform::audio {

namespace {

std::mutex &plannerLock()
{
    static std::mutex lock;
    return lock;
}

} // namespace

RealBuffer allocReal(size_t count)
{
    auto *p = static_cast<float *>(fftwf_malloc(sizeof(float) * count));
    if (!p)
        throw std::bad_alloc();
    std::memset(p, 0, sizeof(float) * count);
    return RealBuffer(p);
}

ComplexBuffer allocComplex(size_t count)
{
    auto *p = static_cast<fftwf_complex *>(fftwf_malloc(sizeof(fftwf_complex) * count));
    if (!p)
        throw std::bad_alloc();
    std::memset(p, 0, sizeof(fftwf_complex) * count);
    return ComplexBuffer(p);
}

RealFft::RealFft(int n) : m_n(n), m_in(allocReal(n)), m_out(allocComplex(n / 2 + 1))
{
    std::lock_guard lock(plannerLock());
    // Estimated plans: made in microseconds, so a chain opens without a pause.
    m_plan = fftwf_plan_dft_r2c_1d(n, m_in.get(), m_out.get(), FFTW_ESTIMATE);
    if (!m_plan)
        throw std::bad_alloc();
}

RealFft::~RealFft()
{
    std::lock_guard lock(plannerLock());
    fftwf_destroy_plan(m_plan);
}

InverseRealFft::InverseRealFft(int n) : m_n(n), m_in(allocComplex(n / 2 + 1)), m_out(allocReal(n))
{
    std::lock_guard lock(plannerLock());
    m_plan = fftwf_plan_dft_c2r_1d(n, m_in.get(), m_out.get(), FFTW_ESTIMATE);
    if (!m_plan)
        throw std::bad_alloc();
}

InverseRealFft::~InverseRealFft()
{
    std::lock_guard lock(plannerLock());
    fftwf_destroy_plan(m_plan);
}

} // namespace platform::audio
