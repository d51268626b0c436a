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
    RzList<RzString> names;
    for (int i = 0; i < 12; ++i) names.AddFront(copy);
    names.Remove(0);
    RzArray<RzString> words(2);
    words[1] = names[10];
    if (names.count != 11 || !(words[1] == "photo.jpg")) return 1;
    RzObject* object = new RzObject;
    {
        RzSmartPtr<RzObject> held(object);
        object->Delete();
        if (held->RefCount() != 1) return 1;
    }
    RzFileSpec photo("/tmp/photo.JPG");
    photo.SetType(eRzTypeTIFF);
    if (photo.GetName() != "photo.tif" || photo.GetCreatorID() != 0x3842494Du) return 1;
    if (RzMacGetPosixPath(kRzRootVolume, kRzRootFolderID) != "/") return 1;
    void* block = RzClone("abc", 4);
    RzFree(block);
    printf("rz consumer: %s, platform 0x%lx, ok\n", copy.c_str(),
           static_cast<unsigned long>(RzGetPlatform()));
    return 0;
}
