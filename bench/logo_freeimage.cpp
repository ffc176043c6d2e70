// FreeImage at converting a bitmap file into a black-and-white one, a process a file:
//
//      logo_freeimage HOW IN.bmp OUT.bmp     HOW is ordered or diffusion
#include <FreeImage.h>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: logo_freeimage HOW IN.bmp OUT.bmp\n");
        return 2;
    }
    const FREE_IMAGE_DITHER how = std::string(argv[1]) == "ordered" ? FID_BAYER8x8 : FID_FS;
    FIBITMAP* const colours = FreeImage_Load(FIF_BMP, argv[2]);
    FIBITMAP* const mono = FreeImage_Dither(colours, how);
    const bool isSaved = FreeImage_Save(FIF_BMP, mono, argv[3]) != FALSE;
    FreeImage_Unload(mono);
    FreeImage_Unload(colours);
    return isSaved ? 0 : 1;
}
