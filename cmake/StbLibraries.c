/* What the project takes of the stb libraries, compiled once: outlines of letters and PNG files. */
#include <stddef.h>
#include <stdlib.h>

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

/* What packs a picture's rows: gives memory of malloc's, or null. Set before any picture is written. */
typedef unsigned char* PictureRowPacker(unsigned char* rows, int count, int* packedCount, int effort);
static PictureRowPacker* packPictureRows = NULL;

void SetPictureRowPacker(PictureRowPacker* packer) { packPictureRows = packer; }

#define STBIW_ZLIB_COMPRESS packPictureRows
#define STBI_WRITE_NO_STDIO
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>
