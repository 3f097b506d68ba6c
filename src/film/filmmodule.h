// The one function of the film module, looked up by name in libtubixfilm.so.
#pragma once

// Reads the first frame of the film at `path` (UTF-8) and hands it to `take` as 24-bit BGR, row after row of
// `stride` bytes; the pixels live as long as the call. False when there is no frame. Throws nothing.
using FilmFrameTaker = void (*)(void *context, const unsigned char *pixels, int width, int height,
                                long stride);
extern "C" bool tubixFilmFirstFrame(const char *path, FilmFrameTaker take, void *context) noexcept;
