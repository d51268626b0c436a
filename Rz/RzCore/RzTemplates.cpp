#include <Rz/RzCore/RzTemplates.h>

#include <Rz/internal/RzRaise.h>

static const char kRzUnit[] = "RzTemplates";

void RzRaisePtrInvalid() {
    RZ_RAISE_AT(kRzPtrInvalid, kRzLinePtrInvalid);
}
