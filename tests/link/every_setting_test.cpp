// A setting that is described but not sent would be one that the user changes in vain.
#include <gtest/gtest.h>

#include <vector>

#include "hex_bytes.h"
#include "link/parameter_download.h"
#include "resources/resource.h"
#include "settings/pages.h"
#include "tests/settings/record_fixture.h"

namespace {

std::vector<const Setting*> ReaderFields(ReaderType type) {
    const SettingList items = ReaderItems(type);
    std::vector<const Setting*> fields(items.begin(), items.end());
    for (const SettingGroup& group : GroupsOn(type)) {
        fields.insert(fields.end(), group.Switch.begin(), group.Switch.end());
        fields.insert(fields.end(), group.Items.begin(), group.Items.end());
    }
    return fields;
}

void AllAlike(WORD device) {
    DeviceFlags = device;
    FillRecord('0');
    TakeSnapshots();
}

TEST(EverySetting, OfA1DReaderStandsInTheBlock) {
    for (const Setting* field : ReaderFields(ReaderType::Decoder1D)) {
        AllAlike(Device1D);
        ParameterBlock before{}, after{};
        Build1DParameterBlock(before);
        SetValue(*field, '1');
        Build1DParameterBlock(after);
        EXPECT_NE(Hex(before), Hex(after)) << field->Name;
    }
}

TEST(EverySetting, ThatIsAParameterStandsInAPacket) {
    for (const WORD device : {DeviceLaser, DeviceImager}) {
        int parameters = 0;
        DeviceFlags = device;
        for (const Setting* field : ReaderFields(FittedReader())) {
            AllAlike(device);
            SetValue(*field, '1');
            std::size_t sent = 0;
            for (const ParameterRows rows :
                 {ParameterRows::Laser, ParameterRows::ImagerFirst, ParameterRows::ImagerSecond}) {
                ParameterPacket packet;
                if ((rows == ParameterRows::Laser) == (device == DeviceLaser)) {
                    BuildParameterPacket(rows, packet);
                    sent += packet.Length - EmptyParameterPacket;
                }
            }
            const bool isLength = field->Label == IDS_SELECT_DISCRETE_LENGTH;
            if (isLength || field->Parameter.Number != NoParameter) {
                EXPECT_NE(sent, 0u) << field->Name;
                ++parameters;
            } else {
                EXPECT_EQ(sent, 0u) << field->Name;
            }
        }
        EXPECT_GT(parameters, 50);
    }
}

}  // namespace
