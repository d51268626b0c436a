#include <Rz/FileSpec/RzFileInfo.h>

#include "support/RzTestSupport.h"

TEST(RzFileInfo, StartsAsAFileWithoutDatesOrSize) {
    RzFileSpec custom(RzString("/tmp/a.xyz"));
    custom.SetTypeID(0x41424344);  // 'ABCD', kept as it is
    const RzFileInfo fromName(RzString("/tmp/photo.jpg")), fromSpec(custom);
    for (const RzFileInfo& info : {fromName, fromSpec})
        EXPECT_EQ(Joined(info.IsFile(), info.GetSize(), info.GetCreationDate().GetString(),
                         info.GetModificationDate().GetString()),
                  "true|0|0-1-1 0:00:00|0-1-1 0:00:00");
    EXPECT_EQ(Joined(fromName.GetType(), fromName.GetCreatorID(), fromSpec.GetTypeID(),
                     fromSpec.GetCreatorID()),
              Joined(eRzTypeJPEG, RzString("8BIM").ToSig(), 0x41424344, 0));
}
