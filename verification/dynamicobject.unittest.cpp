#include "core/dynamic/dynamicobject.h"

#include "runtime/resource/dynamicresourceid.h"

#include <gtest/gtest.h>

class ZDynamicObjectTest : public testing::Test
{
protected:
    // {"root": {"item1": {"prop1": 1, "prop2": 2}, "item2": {"prop1": 3, "prop2": lastProperty}}}
    static ZDynamicObject MakeTree(const ZDynamicObject& lastProperty)
    {
        return ZDynamicObject::Object().Set(
            "root", ZDynamicObject::Object()
                        .Set("item1", ZDynamicObject::Object().Set("prop1", 1).Set("prop2", 2))
                        .Set("item2", ZDynamicObject::Object().Set("prop1", 3).Set("prop2", lastProperty)));
    }

    // A string, a float, an int and a bool.
    static ZDynamicObject MakeProperties()
    {
        return ZDynamicObject::Object().Set("key1", "Test String").Set("key2", 12.5f).Set("key3", 42).Set("key4", true);
    }

private:
    ZMemAllocatorScope m_scope;
};

TEST_F(ZDynamicObjectTest, ValueAccess)
{
    GetTypeRegistry().Register(GetType<TArray<ZDynamicObject>>());
    GetTypeRegistry().Register(GetType<TArray<SDynamicObjectKeyValuePair>>());

    {
        const ZDynamicObject strobj(ZString("String Value"));
        EXPECT_TRUE(strobj.IsValue<ZString>());
        EXPECT_STREQ("String Value", strobj.GetValue<ZString>().ToCString());
    }
    {
        const ZDynamicObject strobj("String Value");
        EXPECT_TRUE(strobj.IsValue<ZString>());
        EXPECT_STREQ("String Value", strobj.GetValue<ZString>().ToCString());
    }
    {
        const ZDynamicObject nullObj;
        EXPECT_TRUE(1 == nullObj.GetValueOrDefault(1));
        EXPECT_TRUE(ZString("Default") == nullObj.GetValueOrDefault(ZString("Default")));
        EXPECT_TRUE(ZString("Default") == nullObj.GetValueOrDefault("Default"));
        EXPECT_TRUE(ZString("Default") != nullObj.GetValueOrDefault("Not Default"));
    }
    {
        const ZDynamicObject intobj(42);
        EXPECT_TRUE(intobj.IsValue<int>());
        EXPECT_EQ(42, intobj.GetValue<int>());
        int val = 0;
        const bool bSuccess = intobj.TryGetValue(val);
        ASSERT_TRUE(bSuccess);
        EXPECT_EQ(42, val);
    }
    {
        const ZDynamicObject boolobj(true);
        EXPECT_TRUE(boolobj.IsValue<bool>());
        EXPECT_EQ(true, boolobj.GetValue<bool>());
    }
    {
        const ZDynamicObject guidObj(ZGuid("6faa7ec1-2a3b-4ca8-a09d-33bab9a8fa0d"));
        EXPECT_TRUE(guidObj.IsValue<ZGuid>());
        EXPECT_TRUE(guidObj.GetValue<ZGuid>() == ZGuid("6faa7ec1-2a3b-4ca8-a09d-33bab9a8fa0d"));
    }
    {
        const ZDynamicObject ridObj(ZRuntimeResourceID::Create(0xb917c715a056b9));
        EXPECT_TRUE(ridObj.IsValue<ZRuntimeResourceID>());
        const ZRuntimeResourceID ridDynamic = ridObj.GetValue<ZRuntimeResourceID>();
        const ZRuntimeResourceID ridConverted = ZRuntimeResourceID::Create(0xb917c715a056b9);
        EXPECT_TRUE(ridDynamic == ridConverted);
    }
}

TEST_F(ZDynamicObjectTest, VariantAccess)
{
    const ZVariant varTrue(true);
    const ZVariant var42(42);
    const ZVariant varStr(ZString("A string"));
    ZDynamicObject obj = ZDynamicObject::Object();
    obj.Set("varTrue", ZDynamicObject(varTrue));
    obj.Set("var42", ZDynamicObject(var42));
    obj.Set("varStr", ZDynamicObject(varStr));

    EXPECT_TRUE(obj["varTrue"] == varTrue);
    EXPECT_TRUE(obj["var42"] == var42);
    EXPECT_TRUE(obj["varStr"] == varStr);
    EXPECT_TRUE(obj["varTrue"] == true);
    EXPECT_TRUE(obj["var42"] == 42);
    EXPECT_TRUE(obj["varStr"] == "A string");
}

TEST_F(ZDynamicObjectTest, ArrayCopy)
{
    TArray<int> numbers;
    for (int i = 0; i < 10; ++i)
        numbers.Add(i);
    ZDynamicObject arrayobj = ZDynamicObject::Array();
    arrayobj.AssignArray(numbers);

    EXPECT_EQ(10u, arrayobj.Size());
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_TRUE(arrayobj[i].IsValue<int>());
        EXPECT_EQ(i, arrayobj[i].GetValue<int>());
    }
}

TEST_F(ZDynamicObjectTest, ArrayCreation)
{
    ZDynamicObject arrayobj = ZDynamicObject::Array();
    for (int i = 0; i < 10; ++i)
        arrayobj.PushBack(i);

    EXPECT_EQ(10u, arrayobj.Size());
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_TRUE(arrayobj[i].IsValue<int>());
        EXPECT_EQ(i, arrayobj[i].GetValue<int>());
    }
    EXPECT_TRUE(arrayobj[100].IsNull());
}

TEST_F(ZDynamicObjectTest, ObjectAccess)
{
    ZDynamicObject obj = MakeProperties();

    ZString sResult;
    ASSERT_TRUE(obj.TryGet("key1", sResult));
    EXPECT_STREQ("Test String", sResult.ToCString());
    float fResult = 0;
    ASSERT_TRUE(obj.TryGet("key2", fResult));
    EXPECT_EQ(12.5f, fResult);
    int nResult = 0;
    ASSERT_TRUE(obj.TryGet("key3", nResult));
    EXPECT_EQ(42, nResult);
    bool bResult = false;
    ASSERT_TRUE(obj.TryGet("key4", bResult));
    EXPECT_EQ(true, bResult);

    obj.Set("key1", ZString("Other String"));
    ASSERT_TRUE(obj.TryGet("key1", sResult));
    EXPECT_STREQ("Other String", sResult.ToCString());

    EXPECT_TRUE(obj["key1"].IsValue<ZString>());
    EXPECT_FALSE(obj["key1"].IsValue<int>());
    EXPECT_TRUE(obj["missing"]["key"].IsNull());
}

TEST_F(ZDynamicObjectTest, EqualityOperator)
{
    EXPECT_TRUE(ZDynamicObject(42) == ZDynamicObject(42));
    EXPECT_FALSE(ZDynamicObject(42) == ZDynamicObject(43));
    EXPECT_TRUE(ZDynamicObject(42) == 42);
    EXPECT_TRUE(ZDynamicObject(42) != 43);
    EXPECT_TRUE(ZDynamicObject(true) == true);
    EXPECT_FALSE(ZDynamicObject(true) == false);

    const ZDynamicObject strobj2(ZString::Format("Dynamic string {0}", 2, ZVariantRef(), ZVariantRef(), ZVariantRef(),
                                                 ZVariantRef(), ZVariantRef(), ZVariantRef(), ZVariantRef()));
    EXPECT_TRUE(strobj2 == ZDynamicObject("Dynamic string 2"));
    EXPECT_TRUE(strobj2 == ZString("Dynamic string 2"));
    EXPECT_TRUE(strobj2 == "Dynamic string 2");
    EXPECT_TRUE(strobj2 != "Something else");
    EXPECT_TRUE(ZDynamicObject("SOME STRING") == ZString("SOME ") + ZString("STRING"));
}

TEST_F(ZDynamicObjectTest, SubObjectEnumeration)
{
    ZDynamicObject obj = ZDynamicObject::Object().Set("subObj", MakeProperties());

    ZString sResult;
    ASSERT_TRUE(obj["subObj"].TryGet("key1", sResult));

    auto properties = obj["subObj"].GetPropertiesEnumerator();
    while (properties.MoveNext())
    {
        const ZString subObjPropertyKey = properties.Current().m_key;
        const ZDynamicObject subObjPropertyVal = properties.Current().m_value;
        if (subObjPropertyKey == "key1")
        {
            ASSERT_TRUE(subObjPropertyVal.GetValue<ZString>() == "Test String");
        }
        else if (subObjPropertyKey == "key2")
        {
            ASSERT_FLOAT_EQ(12.5f, subObjPropertyVal.GetValue<float>());
        }
        else if (subObjPropertyKey == "key3")
        {
            ASSERT_EQ(42, subObjPropertyVal.GetValue<int>());
        }
        else if (subObjPropertyKey == "key4")
        {
            ASSERT_TRUE(subObjPropertyVal.GetValue<bool>());
        }
    }
}

TEST_F(ZDynamicObjectTest, ComplexObject)
{
    ZDynamicObject obj = MakeTree(4);

    EXPECT_TRUE(obj["root"]["item1"]["prop1"] == 1);
    EXPECT_TRUE(obj["root"]["item1"]["prop2"] == 2);
    EXPECT_TRUE(obj["root"]["item2"]["prop1"] == 3);
    EXPECT_TRUE(obj["root"]["item2"]["prop2"] == 4);
    EXPECT_TRUE(obj["root"]["item1"]["prop1"] == ZDynamicObject(1));
    EXPECT_FALSE(obj["root"]["item1"]["prop1"] == ZDynamicObject(2));
    EXPECT_FALSE(obj["non"]["existing"]["object"] == ZDynamicObject(0));
}

TEST_F(ZDynamicObjectTest, PathReadOperations)
{
    const ZDynamicObject obj = MakeTree(4);

    int root_item2_prop2 = 0;
    EXPECT_TRUE(obj.TryGetPath("root.item2.prop2", root_item2_prop2));
    EXPECT_EQ(4, root_item2_prop2);

    ZDynamicObject root_item1;
    EXPECT_TRUE(obj.TryGetPath("root.item1", root_item1));
    EXPECT_TRUE(root_item1.IsObject());
    EXPECT_EQ(1, root_item1["prop1"].GetValue<int>());
    EXPECT_EQ(2, root_item1["prop2"].GetValue<int>());

    ZDynamicObject nonExistingItem;
    EXPECT_FALSE(obj.TryGetPath("root.item3", nonExistingItem));
    EXPECT_FALSE(obj.TryGetPath("root.item1.prop3", nonExistingItem));
    EXPECT_FALSE(obj.TryGetPath("root.item1.prop3.prop1", nonExistingItem));

    ZString wronglyTypedItem;
    EXPECT_FALSE(obj.TryGetPath("root.item1.prop1", wronglyTypedItem));
}

TEST_F(ZDynamicObjectTest, PathWriteOperations)
{
    ZDynamicObject obj = MakeTree(4);

    int root_item2_prop2 = 0;
    EXPECT_TRUE(obj.TrySetPath("root.item2.prop2", 5));
    EXPECT_TRUE(obj.TryGetPath("root.item2.prop2", root_item2_prop2));
    EXPECT_EQ(5, root_item2_prop2);

    const ZDynamicObject root_item1 = ZDynamicObject::Object().Set("newProp1", 45).Set("newProp2", "prop");
    int root_newItem1_prop1 = 0;
    ZString root_newItem1_prop2;
    EXPECT_TRUE(obj.TrySetPath("root.item1", root_item1));
    EXPECT_TRUE(obj.TryGetPath("root.item1.newProp1", root_newItem1_prop1));
    EXPECT_TRUE(obj.TryGetPath("root.item1.newProp2", root_newItem1_prop2));
    EXPECT_EQ(45, root_newItem1_prop1);
    EXPECT_TRUE(ZString("prop") == root_newItem1_prop2);

    int root_item3 = 0;
    EXPECT_TRUE(obj.TrySetPath("root.item3", 42));
    EXPECT_TRUE(obj.TryGetPath("root.item3", root_item3));
    EXPECT_EQ(42, root_item3);

    EXPECT_TRUE(obj.TrySetPath("root.item1", 42));
    EXPECT_TRUE(obj.TrySetPath("root.item2.prop1", "not an int"));
}

TEST_F(ZDynamicObjectTest, PathUpdateOperations)
{
    ZDynamicObject obj = MakeTree(ZDynamicObject::Array());

    int root_item2_prop2 = 0;
    EXPECT_TRUE(obj.TrySetPath("root.item2.prop1", 4));
    EXPECT_TRUE(obj.TryGetPath("root.item2.prop1", root_item2_prop2));
    EXPECT_EQ(4, root_item2_prop2);

    ZDynamicObject testArray;
    const auto update = [](ZDynamicObject& node)
    {
        node.PushBack(ZDynamicObject("Test1"));
        return true;
    };
    EXPECT_TRUE(obj.TryUpdatePath("root.item2.prop2", update));
    EXPECT_TRUE(obj.TryGetPath("root.item2.prop2", testArray));
    EXPECT_TRUE(testArray.IsArray());
    EXPECT_EQ(1u, testArray.Size());
    EXPECT_STREQ("Test1", testArray[0].GetValueOrDefault("").ToCString());
}

TEST_F(ZDynamicObjectTest, ShouldConvertNumberValuesImplicitely)
{
    const ZDynamicObject twelve(12);

    EXPECT_TRUE(twelve == 12);
    EXPECT_TRUE(twelve == (uint8)12);
    EXPECT_TRUE(twelve == (uint16)12);
    EXPECT_TRUE(twelve == (uint64)12);

    EXPECT_TRUE(twelve.IsValue<float32>());
    EXPECT_TRUE(twelve.IsValue<float64>());
    EXPECT_TRUE(twelve.IsValue<int8>());
    EXPECT_TRUE(twelve.IsValue<int16>());
    EXPECT_TRUE(twelve.IsValue<int32>());
    EXPECT_TRUE(twelve.IsValue<int64>());
    EXPECT_TRUE(twelve.IsValue<uint8>());
    EXPECT_TRUE(twelve.IsValue<uint16>());
    EXPECT_TRUE(twelve.IsValue<uint32>());
    EXPECT_TRUE(twelve.IsValue<uint64>());

    uint8 val = 0;
    EXPECT_TRUE(twelve.TryGetValue(val));
    ZString str;
    EXPECT_FALSE(twelve.TryGetValue(str));

    EXPECT_TRUE(ZDynamicObject(0xffffffff) == 0xffffffff);
    EXPECT_TRUE(ZDynamicObject(0xffffffff) != 0xfffffffe);
    EXPECT_TRUE(ZDynamicObject(0xffffffff) != -1);
}

TEST_F(ZDynamicObjectTest, MapArrayTest)
{
    const ZDynamicObject arr = ZDynamicObject::Array().PushBack(1).PushBack(2).PushBack(3);
    const ZDynamicObject arr2 = arr.MapArray([](int n) { return n * 2; });

    EXPECT_TRUE(arr2[0] == 2);
    EXPECT_TRUE(arr2[1] == 4);
    EXPECT_TRUE(arr2[2] == 6);
}
