// What the two archive targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

using unpacker = int(const std::string& archive, const std::string& folder, std::string* name,
                     int use_name);

// Unpacks the bytes into a scratch folder and empties it. Aborts if anything was written outside.
void fuzz_unpack(unpacker* unpack, const uint8_t* data, size_t size);
