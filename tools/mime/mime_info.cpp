// mime_info: writes the desktop's MIME entry (shared-mime-info XML) of the
// colour formats that the file-type table knows and the freedesktop.org
// database lacks. The file name patterns come from the table itself, so the
// desktop names exactly the files that RzFileSpec types.
//
//     mime_info OUTPUT.xml
#include <stdio.h>
#include <string.h>

#include <string>

#include <Rz/FileSpec/RzFileSpec.h>
#include <Rz/internal/RzFinderCodes.h>

namespace {

// One MIME type and the rows of the table it covers: those of `type`, and of
// those only the ones with `creator` when it is not 0.
struct MimeFormat {
    const char* mimeType;
    const char* comment;
    const char* acronym;          // may be null
    const char* expandedAcronym;  // with the acronym
    const char* subClassOf;       // may be null
    const char* genericIcon;      // may be null
    const char* magic;            // a keyword at offset 0, or null
    RzFileType type;
    uint32_t creator;
};

// The measurement texts ("cie", "ref", "it8") are the text files that the
// framework's own creator code marks; the swatches are their own type.
const MimeFormat kFormats[] = {
    {"text/x-cgats", "CGATS colour measurement data", "CGATS",
     "Committee for Graphic Arts Technologies Standards", "text/plain", "text-x-generic", "CGATS",
     eRzTypeText, RzFourCharCode("RzTl")},
    {"application/x-adobe-aco", "Colour swatches", nullptr, nullptr, nullptr, "x-office-document",
     nullptr, eRzTypeSwatches, 0},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: mime_info OUTPUT.xml\n");
        return 2;
    }
    std::string xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!-- Colour formats of Rz's file-type table; written by mime_info. -->\n"
        "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n";
    for (const MimeFormat& format : kFormats) {
        std::string globs;
        for (int32_t i = 0; i < RzFileTypeInfoListCount; ++i) {
            const RzFileTypeInfo& row = RzFileTypeInfoList[i];
            if (row.type != format.type || !*row.extension) continue;
            if (format.creator != 0 && row.creatorID != format.creator) continue;
            globs += std::string("    <glob pattern=\"*.") + row.extension + "\"/>\n";
        }
        if (globs.empty()) {
            fprintf(stderr, "mime_info: no file type of the table is %s\n", format.mimeType);
            return 1;
        }
        xml += std::string("  <mime-type type=\"") + format.mimeType + "\">\n";
        xml += std::string("    <comment>") + format.comment + "</comment>\n";
        if (format.acronym) {
            xml += std::string("    <acronym>") + format.acronym + "</acronym>\n";
            xml += std::string("    <expanded-acronym>") + format.expandedAcronym +
                   "</expanded-acronym>\n";
        }
        if (format.subClassOf)
            xml += std::string("    <sub-class-of type=\"") + format.subClassOf + "\"/>\n";
        if (format.genericIcon)
            xml += std::string("    <generic-icon name=\"") + format.genericIcon + "\"/>\n";
        xml += globs;
        if (format.magic) {
            xml += "    <magic priority=\"50\">\n";
            xml += std::string("      <match type=\"string\" offset=\"0\" value=\"") +
                   format.magic + "\"/>\n";
            xml += "    </magic>\n";
        }
        xml += "  </mime-type>\n";
    }
    xml += "</mime-info>\n";

    FILE* out = fopen(argv[1], "wb");
    if (!out || fwrite(xml.data(), 1, xml.size(), out) != xml.size() || fclose(out) != 0) {
        fprintf(stderr, "mime_info: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
