#include "message_parcel.h"

#include <gtest/gtest.h>

#include <vector>

#include "ipc_test_support.h"

namespace Tarvo {
namespace {
using namespace IpcTest;
using Bytes = std::vector<uint8_t>;

Bytes BytesOf(const Parcel& parcel)
{
    return Bytes(parcel.GetData(), parcel.GetData() + parcel.GetDataSize());
}

class MessageParcelTest : public testing::Test {
protected:
    std::shared_ptr<VirtualProcess> owner_ = MakeProcess(100, "owner");
    std::shared_ptr<VirtualProcess> reader_ = MakeProcess(101, "reader");
};

TEST_F(MessageParcelTest, InterfaceTokenIsAString16)
{
    MessageParcel parcel;
    ASSERT_TRUE(parcel.WriteInterfaceToken(u"T.I"));
    EXPECT_EQ(BytesOf(parcel), (Bytes{0x03, 0, 0, 0, 'T', 0, '.', 0, 'I', 0, 0, 0}));
    EXPECT_EQ(parcel.ReadInterfaceToken(), u"T.I");
    EXPECT_EQ(parcel.ReadInterfaceToken(), u"");
}

TEST_F(MessageParcelTest, ObjectsTravelAsMarkerAndTableIndex)
{
    sptr<FunctionStub> first = MakeStub(owner_, u"test.First");
    sptr<FunctionStub> second = MakeStub(owner_, u"test.Second");
    MessageParcel parcel;
    ASSERT_TRUE(parcel.WriteRemoteObject(first));
    ASSERT_TRUE(parcel.WriteRemoteObject(second));
    EXPECT_FALSE(parcel.WriteRemoteObject(nullptr));
    EXPECT_EQ(BytesOf(parcel), (Bytes{0x21, 0x4A, 0x42, 0x4F, 0, 0, 0, 0, 0x21, 0x4A, 0x42, 0x4F, 1, 0, 0, 0}));
    EXPECT_EQ(parcel.GetObjectCount(), 2u);

    // A copy carries the table; the owner reads its own objects back.
    MessageParcel copy = parcel;
    ScopedProcess scope(owner_);
    EXPECT_EQ(copy.ReadRemoteObject(), sptr<IRemoteObject>(first));
    EXPECT_EQ(copy.ReadRemoteObject(), sptr<IRemoteObject>(second));
    EXPECT_EQ(copy.ReadRemoteObject(), nullptr);
}

TEST_F(MessageParcelTest, ForgedReferencesReadAsNull)
{
    sptr<FunctionStub> stub = MakeStub(owner_, u"test.Object");
    MessageParcel parcel;
    ASSERT_TRUE(parcel.WriteUint32(0x4F424A20));
    ASSERT_TRUE(parcel.WriteUint32(0));
    ASSERT_TRUE(parcel.WriteUint32(MessageParcel::kObjectMarker));
    ASSERT_TRUE(parcel.WriteUint32(1));
    ASSERT_TRUE(parcel.WriteUint32(MessageParcel::kObjectMarker));
    ASSERT_TRUE(parcel.WriteRemoteObject(stub));
    ScopedProcess scope(owner_);
    // Wrong marker, then an index past the table: nothing consumed either time.
    EXPECT_EQ(parcel.ReadRemoteObject(), nullptr);
    EXPECT_EQ(parcel.GetReadPosition(), 0u);
    ASSERT_TRUE(parcel.RewindRead(8));
    EXPECT_EQ(parcel.ReadRemoteObject(), nullptr);
    EXPECT_EQ(parcel.GetReadPosition(), 8u);

    // Bytes alone carry no objects.
    MessageParcel bytesOnly;
    ASSERT_TRUE(bytesOnly.ParseFrom(parcel.GetData() + 20, 8));
    EXPECT_EQ(bytesOnly.ReadRemoteObject(), nullptr);
    // A marker cut short.
    MessageParcel cut;
    ASSERT_TRUE(cut.ParseFrom(parcel.GetData() + 16, 4));
    EXPECT_EQ(cut.ReadRemoteObject(), nullptr);
}

TEST_F(MessageParcelTest, ReaderInAnotherProcessGetsOneProxyPerObject)
{
    sptr<FunctionStub> stub = MakeStub(owner_, u"test.Object");
    sptr<IRemoteObject> proxy = Transfer(stub, reader_);
    ASSERT_NE(proxy, nullptr);
    EXPECT_TRUE(proxy->IsProxyObject());
    EXPECT_EQ(proxy->GetObjectDescriptor(), u"test.Object");
    EXPECT_EQ(Transfer(stub, reader_), proxy);
    // Written by the holder, a proxy stands for its object: the owner reads the stub.
    EXPECT_EQ(Transfer(proxy, owner_), sptr<IRemoteObject>(stub));
}

TEST_F(MessageParcelTest, ObjectNeedsRoomForItsReference)
{
    sptr<FunctionStub> stub = MakeStub(owner_, u"test.Object");
    MessageParcel parcel;
    ASSERT_TRUE(parcel.SetMaxCapacity(12));
    ASSERT_TRUE(parcel.WriteInt32(7));
    EXPECT_TRUE(parcel.WriteRemoteObject(stub));
    EXPECT_FALSE(parcel.WriteRemoteObject(stub));
    EXPECT_EQ(parcel.GetDataSize(), 12u);
    EXPECT_EQ(parcel.GetObjectCount(), 1u);
}

}  // namespace
}  // namespace Tarvo
