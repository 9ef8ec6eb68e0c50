// What the files of the lanes share among themselves: the code for each instruction set. `all`
// digests twice as many lanes as `half`; neither may be called where the instructions are missing.
#pragma once

#include <cstddef>

struct MD5_lanes;

// Four lanes to a vector: what every processor of a kind has, such as SSE2.
void MD5_half_of_8(MD5_lanes& lanes, size_t blocks);
void MD5_all_of_8(MD5_lanes& lanes, size_t blocks);

#if defined(__x86_64__)
// AVX2, eight lanes to a vector.
void MD5_half_of_16(MD5_lanes& lanes, size_t blocks);
void MD5_all_of_16(MD5_lanes& lanes, size_t blocks);

// AVX-512 Foundation, sixteen lanes to a vector.
void MD5_half_of_32(MD5_lanes& lanes, size_t blocks);
void MD5_all_of_32(MD5_lanes& lanes, size_t blocks);
#endif
