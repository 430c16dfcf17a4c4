// Encoding of grey images into the file formats QUORIN_SaveImage offers.
#pragma once

#include <cstddef>
#include <vector>

#include "QuorinCtrl.h"
#include "model/status.h"

namespace qsim {

// Bytes an image of width x height takes at a GVSP pixel type, whose second-highest byte
// counts its bits per pixel; rounded up to whole bytes.
unsigned long long DeclaredImageBytes(long long pixelType, unsigned int width, unsigned int height);

// Checks a save request and encodes its Mono8 pixels as its enImageType (BMP, JPEG or PNG).
Status EncodeSavedImage(const QUORIN_SAVE_IMAGE_PARAM& param, std::vector<unsigned char>& encoded);

// `quality` 1..100.
std::vector<unsigned char> EncodeGreyJpeg(const unsigned char* pixels, unsigned int width, unsigned int height,
                                          size_t stride, int quality);
std::vector<unsigned char> EncodeGreyPng(const unsigned char* pixels, unsigned int width, unsigned int height,
                                         size_t stride);

}  // namespace qsim
