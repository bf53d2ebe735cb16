/* What the project takes of the stb libraries, compiled once: outlines of letters and PNG files. */
#include <stdlib.h>

#include <zlib.h>

#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_truetype.h>

/* zlib packs many times faster. Null when memory is refused. */
static unsigned char* PackedBytes(unsigned char* bytes, int count, int* packedCount, int level) {
    uLongf size = compressBound((uLong)count);
    unsigned char* packed = malloc(size);
    if (packed == NULL)
        return NULL;
    if (compress2(packed, &size, bytes, (uLong)count, level) != Z_OK) {
        free(packed);
        return NULL;
    }
    *packedCount = (int)size;
    return packed;
}

#define STBIW_ZLIB_COMPRESS PackedBytes
#define STBI_WRITE_NO_STDIO
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
