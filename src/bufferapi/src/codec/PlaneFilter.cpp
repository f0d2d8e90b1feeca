#include "codec/PlaneFilter.h"

#include <cstring>

#if defined(__SSE2__) || defined(_M_X64) || (defined(_M_IX86_FP) && _M_IX86_FP >= 2)
#include <emmintrin.h>
#define BUFFERAPI_CODEC_SSE2 1
#endif

// Element values are read and written through memcpy: the plane need not be aligned, and the
// arithmetic is modulo 2^bits, so any bit pattern (NaN included) passes unchanged. The work goes
// in blocks of elements through small arrays, so that every step but the running sum of the
// inverse is a plain loop the compiler vectorises.

namespace BufferApi::Private {

namespace {

constexpr std::size_t kBlock = 1024;

// Filters the elements [start, n) after `previous`, the element before start.
template <class T>
void FilterFrom(const std::uint8_t* src, std::size_t start, std::size_t n, T previous, std::uint8_t* dst) noexcept
{
    constexpr unsigned kBytes = sizeof(T);
    constexpr unsigned kTopBit = 8 * kBytes - 1;
    T values[kBlock];
    T zigzag[kBlock];
    for (; start < n; start += kBlock) {
        const std::size_t m = n - start < kBlock ? n - start : kBlock;
        std::memcpy(values, src + start * kBytes, m * kBytes);
        zigzag[0] = static_cast<T>(values[0] - previous);
        for (std::size_t i = 1; i < m; ++i)
            zigzag[i] = static_cast<T>(values[i] - values[i - 1]);
        previous = values[m - 1];
        for (std::size_t i = 0; i < m; ++i) {
            const T delta = zigzag[i];
            zigzag[i] = static_cast<T>(static_cast<T>(delta << 1) ^ static_cast<T>(0u - (delta >> kTopBit)));
        }
        for (unsigned b = 0; b < kBytes; ++b) {
            std::uint8_t* plane = dst + b * n + start;
            for (std::size_t i = 0; i < m; ++i)
                plane[i] = static_cast<std::uint8_t>(zigzag[i] >> (8 * b));
        }
    }
}

template <class T>
void Filter(const std::uint8_t* src, std::size_t n, std::uint8_t* dst) noexcept
{
    FilterFrom<T>(src, 0, n, T(0), dst);
}

// Undoes the filter for the elements [start, n) after `previous`, the element before start.
template <class T>
void UnfilterFrom(const std::uint8_t* src, std::size_t start, std::size_t n, T previous, std::uint8_t* dst) noexcept
{
    constexpr unsigned kBytes = sizeof(T);
    T values[kBlock];
    for (; start < n; start += kBlock) {
        const std::size_t m = n - start < kBlock ? n - start : kBlock;
        for (std::size_t i = 0; i < m; ++i)
            values[i] = src[start + i];
        for (unsigned b = 1; b < kBytes; ++b) {
            const std::uint8_t* plane = src + b * n + start;
            for (std::size_t i = 0; i < m; ++i)
                values[i] = static_cast<T>(values[i] | static_cast<T>(static_cast<T>(plane[i]) << (8 * b)));
        }
        for (std::size_t i = 0; i < m; ++i) {
            const T zigzag = values[i];
            values[i] = static_cast<T>((zigzag >> 1) ^ static_cast<T>(0u - (zigzag & 1u)));
        }
        for (std::size_t i = 0; i < m; ++i) {
            previous = static_cast<T>(previous + values[i]);
            values[i] = previous;
        }
        std::memcpy(dst + start * kBytes, values, m * kBytes);
    }
}

template <class T>
void Unfilter(const std::uint8_t* src, std::size_t n, std::uint8_t* dst) noexcept
{
    UnfilterFrom<T>(src, 0, n, T(0), dst);
}

#ifdef BUFFERAPI_CODEC_SSE2
// 16-bit elements, the common camera case, sixteen at a time: the compiler vectorises the generic
// form only at its highest optimisation level.
template <>
void Filter<std::uint16_t>(const std::uint8_t* src, std::size_t n, std::uint8_t* dst) noexcept
{
    const __m128i lowByte = _mm_set1_epi16(0xFF);
    __m128i carry = _mm_setzero_si128(); // lane 0 holds the element before the next eight
    const auto zigzag8 = [&](__m128i x) {
        const __m128i delta = _mm_sub_epi16(x, _mm_or_si128(_mm_slli_si128(x, 2), carry));
        carry = _mm_srli_si128(x, 14);
        return _mm_xor_si128(_mm_slli_epi16(delta, 1), _mm_srai_epi16(delta, 15));
    };
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i first = zigzag8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * i)));
        const __m128i second = zigzag8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * i + 16)));
        const __m128i low = _mm_packus_epi16(_mm_and_si128(first, lowByte), _mm_and_si128(second, lowByte));
        const __m128i high = _mm_packus_epi16(_mm_srli_epi16(first, 8), _mm_srli_epi16(second, 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + n + i), high);
    }
    FilterFrom<std::uint16_t>(src, i, n, static_cast<std::uint16_t>(_mm_cvtsi128_si32(carry)), dst);
}

// The running sum of the inverse is the one step no compiler vectorises; here it goes eight
// lanes at a time, merged with the byte planes and the zigzag., the common camera case: the running sum is the one step a compiler does not
// vectorise, so it is done here eight lanes at a time, merged with the byte planes and zigzag.
template <>
void Unfilter<std::uint16_t>(const std::uint8_t* src, std::size_t n, std::uint8_t* dst) noexcept
{
    const __m128i one = _mm_set1_epi16(1);
    const __m128i zero = _mm_setzero_si128();
    __m128i carry = zero; // every lane holds the last element done
    const auto sum8 = [&](__m128i zigzag) {
        __m128i x = _mm_xor_si128(_mm_srli_epi16(zigzag, 1), _mm_sub_epi16(zero, _mm_and_si128(zigzag, one)));
        x = _mm_add_epi16(x, _mm_slli_si128(x, 2));
        x = _mm_add_epi16(x, _mm_slli_si128(x, 4));
        x = _mm_add_epi16(x, _mm_slli_si128(x, 8));
        x = _mm_add_epi16(x, carry);
        const __m128i last = _mm_shufflehi_epi16(x, 0xFF);
        carry = _mm_unpackhi_epi64(last, last);
        return x;
    };
    std::size_t i = 0;
    for (; i + 16 <= n; i += 16) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + n + i));
        const __m128i first = sum8(_mm_unpacklo_epi8(low, high));
        const __m128i second = sum8(_mm_unpackhi_epi8(low, high));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * i), first);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 2 * i + 16), second);
    }
    UnfilterFrom<std::uint16_t>(src, i, n, static_cast<std::uint16_t>(_mm_cvtsi128_si32(carry)), dst);
}
#endif

} // namespace

void FilterPlane(const std::uint8_t* src, std::size_t count, unsigned elementSize, std::uint8_t* dst) noexcept
{
    switch (elementSize) {
    case 1: Filter<std::uint8_t>(src, count, dst); break;
    case 2: Filter<std::uint16_t>(src, count, dst); break;
    case 4: Filter<std::uint32_t>(src, count, dst); break;
    default: Filter<std::uint64_t>(src, count, dst); break;
    }
}

void UnfilterPlane(const std::uint8_t* src, std::size_t count, unsigned elementSize, std::uint8_t* dst) noexcept
{
    switch (elementSize) {
    case 1: Unfilter<std::uint8_t>(src, count, dst); break;
    case 2: Unfilter<std::uint16_t>(src, count, dst); break;
    case 4: Unfilter<std::uint32_t>(src, count, dst); break;
    default: Unfilter<std::uint64_t>(src, count, dst); break;
    }
}

} // namespace BufferApi::Private
