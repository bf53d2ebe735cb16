/* What the project takes of the stb libraries, compiled once: outlines of letters and PNG files. */
#include <stddef.h>
#include <stdlib.h>

#include <zlib.h>

/* An outline that gets no memory is left out without a word: what paints it asks here, on its thread. */
static _Thread_local int isLetterMemoryRefused = 0;

static void* LetterMemory(size_t bytes) {
    void* memory = malloc(bytes);
    if (memory == NULL)
        isLetterMemoryRefused = 1;
    return memory;
}

int TakeLetterMemoryRefused(void) {
    const int isRefused = isLetterMemoryRefused;
    isLetterMemoryRefused = 0;
    return isRefused;
}

#define STBTT_malloc(bytes, ignored) ((void)(ignored), LetterMemory(bytes))
#define STBTT_free(memory, ignored) ((void)(ignored), free(memory))
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
