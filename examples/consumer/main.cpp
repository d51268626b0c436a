// Uses a little of everything through the umbrella header.
#include <Rz/Rz.h>

#include <stdio.h>

int main() {
    RzString name("photo");
    RzString copy = name;  // shared until written
    copy += ".jpg";
    if (!(name == "photo") || !(copy == "photo.jpg")) return 1;
    if (!StrMatch("*.jpg", copy.c_str())) return 1;
    if (RzString().FromSig(0x54455854u) != "TEXT") return 1;
    try {
        RzString empty;
        (void)empty[0];
        return 1;
    } catch (const RzError& e) {
        if (e.GetErr() != 7) return 1;
    }
    printf("rz consumer: %s, platform 0x%lx, ok\n", copy.c_str(),
           static_cast<unsigned long>(RzGetPlatform()));
    return 0;
}
