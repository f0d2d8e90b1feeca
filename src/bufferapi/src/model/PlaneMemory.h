#pragma once
// How the library provides the memory of the planes it makes.

namespace BufferApi {
namespace Private {

enum class PlaneMemory {
    None,          // shape only: GetData() is null (frames of a head buffer)
    Uninitialised, // allocated, contents undefined: for a reader that fills every byte
    Zeroed         // allocated and zero-filled
};

} // namespace Private
} // namespace BufferApi
