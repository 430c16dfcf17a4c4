#include "model/image_encoding.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>
#include <png.h>

#include "QuorinSim.h"
#include "model/frame_synthesis.h"

namespace qsim {
namespace {

// libjpeg reports a failure by calling error_exit, which must not return: it jumps back instead.
struct JpegFailure {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};

[[noreturn]] void JumpOnJpegFailure(j_common_ptr common) {
  std::longjmp(reinterpret_cast<JpegFailure*>(common->err)->jump, 1);
}

// Only plain C state lives between the setjmp and a longjmp, so no destructor is ever skipped.
// On success *out is a malloc'd buffer of *size bytes.
bool CompressGrey(const unsigned char* pixels, unsigned int width, unsigned int height, size_t stride, int quality,
                  unsigned char** out, unsigned long* size) {
  jpeg_compress_struct compress;
  JpegFailure failure;
  compress.err = jpeg_std_error(&failure.manager);
  failure.manager.error_exit = JumpOnJpegFailure;
  if (setjmp(failure.jump) != 0) {
    jpeg_destroy_compress(&compress);
    return false;
  }
  jpeg_create_compress(&compress);
  jpeg_mem_dest(&compress, out, size);
  compress.image_width = width;
  compress.image_height = height;
  compress.input_components = 1;
  compress.in_color_space = JCS_GRAYSCALE;
  jpeg_set_defaults(&compress);
  jpeg_set_quality(&compress, quality, TRUE);
  jpeg_start_compress(&compress, TRUE);
  while (compress.next_scanline < compress.image_height) {
    JSAMPROW row = const_cast<JSAMPROW>(pixels + compress.next_scanline * stride);
    jpeg_write_scanlines(&compress, &row, 1);
  }
  jpeg_finish_compress(&compress);
  jpeg_destroy_compress(&compress);
  return true;
}

bool SupportedImageType(QUORIN_IMAGE_TYPE type) {
  return type == QUORIN_Image_Bmp || type == QUORIN_Image_Jpeg || type == QUORIN_Image_Png;
}

}  // namespace

std::vector<unsigned char> EncodeGreyJpeg(const unsigned char* pixels, unsigned int width, unsigned int height,
                                          size_t stride, int quality) {
  unsigned char* buffer = nullptr;
  unsigned long size = 0;
  std::vector<unsigned char> encoded;
  if (CompressGrey(pixels, width, height, stride, quality, &buffer, &size)) {
    encoded.assign(buffer, buffer + size);
  }
  std::free(buffer);  // jpeg_mem_dest may have allocated it even when compression failed
  return encoded;
}

std::vector<unsigned char> EncodeGreyPng(const unsigned char* pixels, unsigned int width, unsigned int height,
                                         size_t stride) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_GRAY;
  std::vector<unsigned char> encoded(PNG_IMAGE_PNG_SIZE_MAX(image));
  png_alloc_size_t size = encoded.size();
  if (!png_image_write_to_memory(&image, encoded.data(), &size, 0, pixels, static_cast<png_int_32>(stride),
                                 nullptr)) {
    return {};
  }
  encoded.resize(size);
  return encoded;
}

unsigned long long DeclaredImageBytes(long long pixelType, unsigned int width, unsigned int height) {
  const unsigned long long bitsPerPixel = (static_cast<unsigned long long>(pixelType) >> 16) & 0xFF;
  return (bitsPerPixel * width * height + 7) / 8;
}

Status EncodeSavedImage(const QUORIN_SAVE_IMAGE_PARAM& param, std::vector<unsigned char>& encoded) {
  if (param.pData == nullptr || param.nWidth == 0 || param.nHeight == 0) {
    return kBadParameter;
  }
  if (!SupportedImageType(param.enImageType)) {
    return kUnsupportedFormat;
  }
  if (param.enPixelType != PixelType_Gvsp_Mono8) {
    return kUnsupportedPixelType;
  }
  if (DeclaredImageBytes(param.enPixelType, param.nWidth, param.nHeight) > param.nDataLen) {
    return kBadParameter;  // the pixels it declares are not all there to read
  }
  const bool jpeg = param.enImageType == QUORIN_Image_Jpeg;
  if (jpeg && (param.nJpgQuality < 1 || param.nJpgQuality > 100)) {
    return kBadParameter;
  }
  if (param.enImageType == QUORIN_Image_Bmp) {
    encoded = EncodeGreyBmp(param.pData, param.nWidth, param.nHeight, param.nWidth);
  } else if (jpeg) {
    encoded = EncodeGreyJpeg(param.pData, param.nWidth, param.nHeight, param.nWidth,
                             static_cast<int>(param.nJpgQuality));
  } else {
    encoded = EncodeGreyPng(param.pData, param.nWidth, param.nHeight, param.nWidth);
  }
  return encoded.empty() ? kResource : Status{0};
}

}  // namespace qsim
