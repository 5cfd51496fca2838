#pragma once

// How the picture layer's direct libjpeg readers take libjpeg's errors: a
// fatal error jumps back to the reader with its message, warnings are not
// printed, and data that ends early is an error rather than a picture with
// a grey tail (otherwise a few bytes claiming a huge picture would make the
// decoder fill the whole of it). Internal to the picture layer.

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>
#include <jerror.h>

namespace tarnby::imaging::detail {

// Handed to libjpeg by useJpegError(); setjmp(jump) before the first libjpeg
// call.
struct JpegError {
    jpeg_error_mgr pub;
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX];
};

inline void jpegErrorExit(j_common_ptr cinfo)
{
    auto *error = reinterpret_cast<JpegError *>(cinfo->err);
    (*cinfo->err->format_message)(cinfo, error->message);
    std::longjmp(error->jump, 1);
}

inline void jpegMessage(j_common_ptr cinfo, int level)
{
    if (level < 0 && cinfo->err->msg_code == JWRN_JPEG_EOF)
        (*cinfo->err->error_exit)(cinfo);
}

// Makes error the error manager of cinfo, with the two handlers above, and
// clears its message. Works for reading and writing alike (a writer's only
// warnings do not concern it).
template <typename Info>
inline void useJpegError(Info &cinfo, JpegError &error)
{
    cinfo.err = jpeg_std_error(&error.pub);
    error.pub.error_exit = jpegErrorExit;
    error.pub.emit_message = jpegMessage;
    error.message[0] = 0;
}

} // namespace tarnby::imaging::detail
