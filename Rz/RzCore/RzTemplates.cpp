#include <Rz/RzCore/RzTemplates.h>

#include <Rz/RzCore/RzError.h>

static const char kRzUnit[] = "RzTemplates";

void RzRaisePtrInvalid() {
    // The line is fixed: applications test for it.
    RzRaise(kRzPtrInvalid, "RzPtrInvalid", kRzUnit, 206);
}
