// No fixture and no allocator scope: nothing in here may reach the normal allocator.
#include "core/values/demangle.h"
#include "core/strings/stack_string.h"

#include <gtest/gtest.h>

TEST(XBox360Demangle, global_func)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?myglobal@@YAHMJ@Z", true);
    EXPECT_STREQ("int __cdecl myglobal(float, long)", demangled.get());

    demangled.clear();
    demangle(demangled, "?globalAnonymFunc@?A0x47aa92c4@@YAXXZ", true);
    EXPECT_STREQ("void __cdecl 'anonymous namespace'::globalAnonymFunc(void)", demangled.get());
}

TEST(XBox360Demangle, member_func)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?doTheBar@Beta@Alpha@@QAEHHM@Z", true);
    EXPECT_STREQ("int __thiscall public: Alpha::Beta::doTheBar(int, float)", demangled.get());
}

TEST(XBox360Demangle, member_func_const_volatile)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?doTheFoo@Beta@Alpha@@QDEHHM@Z", true);
    EXPECT_STREQ("int __thiscall public: Alpha::Beta::doTheFoo(int, float) const volatile", demangled.get());
}

TEST(XBox360Demangle, constructor_destructor)
{
    ZStackString<2048> demangled;
    demangle(demangled, "??0Gamma@Beta@Alpha@@QAE@HH@Z", true);
    EXPECT_STREQ("__thiscall public: Alpha::Beta::Gamma::Gamma(int, int)", demangled.get());

    demangled.clear();
    demangle(demangled, "??1Gamma@Beta@Alpha@@QAE@XZ", true);
    EXPECT_STREQ("__thiscall public: Alpha::Beta::Gamma::~Gamma(void)", demangled.get());
}

TEST(XBox360Demangle, c_name)
{
    ZStackString<2048> demangled;
    demangle(demangled, "_main", true);
    EXPECT_STREQ("main", demangled.get());

    demangled.clear();
    demangle(demangled, "a_c_function", true);
    EXPECT_STREQ("a_c_function", demangled.get());
}

TEST(XBox360Demangle, operators)
{
    ZStackString<2048> demangled;
    demangle(demangled, "??8Gamma@Beta@Alpha@@QBE_NABU012@@Z", true);
    EXPECT_STREQ("bool __thiscall public: Alpha::Beta::Gamma::operator==(struct Alpha::Beta::Gamma const&) const",
                 demangled.get());

    demangled.clear();
    demangle(demangled, "??_0Gamma@Beta@Alpha@@QAEAAU012@ABU012@@Z", true);
    EXPECT_STREQ("struct Alpha::Beta::Gamma& __thiscall public: Alpha::Beta::Gamma::operator/=(struct "
                 "Alpha::Beta::Gamma const&)",
                 demangled.get());

    demangled.clear();
    demangle(demangled, "??AAlpha@@QBEPAMH@Z", true);
    EXPECT_STREQ("float* __thiscall public: Alpha::operator[](int) const", demangled.get());
}

TEST(XBox360Demangle, back_references)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?SimpleMember@Gamma@Beta@Alpha@@QBEXPAXU23@0U123@0PAHVWhale@3@3@Z", true);
    EXPECT_STREQ("void __thiscall public: Alpha::Beta::Gamma::SimpleMember(void*, struct Alpha::Beta, void*, struct "
                 "Alpha::Beta::Gamma, void*, int*, class Alpha::Whale, int*) const",
                 demangled.get());

    demangled.clear();
    demangle(demangled, "?backref@Gamma@Beta@Alpha@@QAEXU123@AAU123@PAU123@VDolphin@@PAV4@3@Z", true);
    EXPECT_STREQ("void __thiscall public: Alpha::Beta::Gamma::backref(struct Alpha::Beta::Gamma, struct "
                 "Alpha::Beta::Gamma&, struct Alpha::Beta::Gamma*, class Dolphin, class Dolphin*, class Dolphin)",
                 demangled.get());
}

TEST(XBox360Demangle, type_modifiers)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?modif@@YAXAAHABHPAHPBHQAHQBH@Z", true);
    EXPECT_STREQ("void __cdecl modif(int&, int const&, int*, int const*, int* const, int const* const)",
                 demangled.get());

    demangled.clear();
    demangle(demangled, "?modif@@YAXPBQBHQAPBHQBQAHQBQBH@Z", true);
    EXPECT_STREQ("void __cdecl modif(int const* const*, int const** const, int* const* const, int const* const* const)",
                 demangled.get());
}

TEST(XBox360Demangle, static_member)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?Simple@MyClass@@SAXXZ", true);
    EXPECT_STREQ("void __cdecl public: static MyClass::Simple(void)", demangled.get());

    demangled.clear();
    demangle(demangled, "?Simple@MyClass@@SAXZZ", true);
    EXPECT_STREQ("void __cdecl public: static MyClass::Simple(...)", demangled.get());
}

TEST(XBox360Demangle, template_name)
{
    ZStackString<2048> demangled;
    demangle(demangled, "??$myTpl@VMyClass@@UMyStruct@@@@YAPAXHM@Z", true);
    EXPECT_STREQ("void* __cdecl myTpl<class MyClass, struct MyStruct>(int, float)", demangled.get());

    demangled.clear();
    demangle(demangled, "??$myTpl@HH@@YAPAXHM@Z", true);
    EXPECT_STREQ("void* __cdecl myTpl<int, int>(int, float)", demangled.get());

    demangled.clear();
    demangle(demangled, "?mySpl@@YAPAXHM@Z", true);
    EXPECT_STREQ("void* __cdecl mySpl(int, float)", demangled.get());

    demangled.clear();
    demangle(demangled, "?funcy@@YAXHV?$MyClass@MN@@PAX@Z", true);
    EXPECT_STREQ("void __cdecl funcy(int, class MyClass<float, double>, void*)", demangled.get());
}

TEST(XBox360Demangle, non_verbose)
{
    ZStackString<2048> demangled;
    demangle(demangled, "??$myTpl@VMyClass@@UMyStruct@@@@YAPAXHM@Z", false);
    EXPECT_STREQ("void* myTpl<MyClass, MyStruct>(int, float)", demangled.get());
}

TEST(XBox360Demangle, function_pointer)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?funcxxone@@YAXHP6AHMN@ZPAX@Z", true);
    EXPECT_STREQ("void __cdecl funcxxone(int, int(*)(float, double), void*)", demangled.get());

    demangled.clear();
    demangle(demangled, "?funcxxtwo@@YAXHP6AHMV?$MyClass@MN@@@ZPAX@Z", true);
    EXPECT_STREQ("void __cdecl funcxxtwo(int, int(*)(float, class MyClass<float, double>), void*)", demangled.get());

    demangled.clear();
    demangle(demangled, "?funcxxthree@@YAXHP8RoClass@@AEHMN@ZPAX@Z", true);
    EXPECT_STREQ("void __cdecl funcxxthree(int, int(RoClass::*)(float, double), void*)", demangled.get());

    demangled.clear();
    demangle(demangled, "?funcxxfour@@YAXHPAP6AHMN@ZPAX@Z", true);
    EXPECT_STREQ("void __cdecl funcxxfour(int, int(**)(float, double), void*)", demangled.get());

    demangled.clear();
    demangle(demangled, "??$arrayFunc@P8Alpha@@AEHPAX@Z@@YAXP8Alpha@@AEHPAX@Z@Z", true);
    EXPECT_STREQ("void __cdecl arrayFunc<int(Alpha::*)(void*)>(int(Alpha::*)(void*))", demangled.get());

    demangled.clear();
    demangle(demangled, "?this_takes_a_c_func@@YAMP6AHXZ@Z", true);
    EXPECT_STREQ("float __cdecl this_takes_a_c_func(int(*)(void))", demangled.get());
}

TEST(XBox360Demangle, enum_stuff)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?enumFunc@@YAXPAXW4RoEnum@@PAH@Z", true);
    EXPECT_STREQ("void __cdecl enumFunc(void*, RoEnum, int*)", demangled.get());
}

TEST(XBox360Demangle, array_stuff)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?arrayFunc@@YAXQAH@Z", true);
    EXPECT_STREQ("void __cdecl arrayFunc(int* const)", demangled.get());

    demangled.clear();
    demangle(demangled, "?arrayFunc@@YAXQAP6AHPAX@Z@Z", true);
    EXPECT_STREQ("void __cdecl arrayFunc(int(** const)(void*))", demangled.get());

    demangled.clear();
    demangle(demangled, "??$arrayFunc@P6AHPAX@Z@@YAXQAP6AHPAX@Z@Z", true);
    EXPECT_STREQ("void __cdecl arrayFunc<int(*)(void*)>(int(** const)(void*))", demangled.get());
}

TEST(XBox360Demangle, variables)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?globalVar@@3HA", true);
    EXPECT_STREQ("int globalVar", demangled.get());

    demangled.clear();
    demangle(demangled, "?staticMember@Alpha@@2HA", true);
    EXPECT_STREQ("int Alpha::staticMember", demangled.get());

    demangled.clear();
    demangle(demangled, "?staticFuncVar@?1??MyFunc@@YAXXZ@4HA", true);
    EXPECT_STREQ("int 'void __cdecl MyFunc(void)'::'2'::staticFuncVar", demangled.get());

    demangled.clear();
    demangle(demangled, "?anonyspace@?A0x47aa92c4@@3HA", true);
    EXPECT_STREQ("int 'anonymous namespace'::anonyspace", demangled.get());
}

TEST(XBox360Demangle, from_real_life)
{
    ZStackString<2048> demangled;
    demangle(demangled, "?vUnitNegZ@?1??WLoadNegUnitZ@@YA?AUfloat4@@XZ@4U2@B", true);
    EXPECT_STREQ("struct float4 'struct float4 __cdecl WLoadNegUnitZ(void)'::'2'::vUnitNegZ", demangled.get());

    demangled.clear();
    demangle(demangled,
             "?PERMUTE_1Y0X0W0W_const@?BC@??TriBoxOverlap@OBBCollider@Opcode@@IAAHABVPoint@IceMaths@@00ABU__vector4@@"
             "1111@Z@4UXMVECTORU32@@B",
             true);
    EXPECT_STREQ(
        "struct XMVECTORU32 'int __cdecl protected: Opcode::OBBCollider::TriBoxOverlap(class IceMaths::Point const&, "
        "class IceMaths::Point const&, class IceMaths::Point const&, struct __vector4 const&, struct __vector4 const&, "
        "struct __vector4 const&, struct __vector4 const&, struct __vector4 const&)'::'13'::PERMUTE_1Y0X0W0W_const",
        demangled.get());

    demangled.clear();
    demangle(
        demangled,
        "?InvokeAll@?$ZEvent2@W4ENetworkControlParam@@ABVZVariantRef@@@@ABAXW4ENetworkControlParam@@ABVZVariantRef@@@Z",
        true);
    EXPECT_STREQ("void __cdecl privat: ZEvent2<ENetworkControlParam, class ZVariantRef "
                 "const&>::InvokeAll(ENetworkControlParam, class ZVariantRef const&) const",
                 demangled.get());

    demangled.clear();
    demangle(demangled,
             "??0?$GetterFieldMaker@P8SkinningTransform@CloakWorks@@BA?AVArray@Reflection@2@XZP812@AAXABV342@@Z@"
             "Reflection@CloakWorks@@QAA@PBDP8SkinningTransform@2@BA?AVArray@12@XZP832@AAXABV412@@Z@Z",
             true);
    EXPECT_STREQ(
        "__cdecl public: CloakWorks::Reflection::GetterFieldMaker<class "
        "CloakWorks::Reflection::Array(CloakWorks::SkinningTransform::*)(void) const, "
        "void(CloakWorks::SkinningTransform::*)(class CloakWorks::Reflection::Array const&)>::GetterFieldMaker<class "
        "CloakWorks::Reflection::Array(CloakWorks::SkinningTransform::*)(void) const, "
        "void(CloakWorks::SkinningTransform::*)(class CloakWorks::Reflection::Array const&)>(char const*, class "
        "CloakWorks::SkinningTransform::Array(CloakWorks::SkinningTransform::*)(void) const, "
        "void(CloakWorks::Array::*)(class CloakWorks::SkinningTransform::Reflection const&))",
        demangled.get());

    demangled.clear();
    demangle(demangled, "??$Fetter2@P8Skin@Cloak@@BEXXZ@@YAXP8Skin@Cloak@@BEXXZ@Z", true);
    EXPECT_STREQ("void __cdecl Fetter2<void(Cloak::Skin::*)(void) const>(void(Cloak::Skin::*)(void) const)",
                 demangled.get());

    demangled.clear();
    demangle(demangled, "??$Fetter2@P8Alpha@@BEXXZ@@YAXP8Alpha@@BEXXZ@Z", true);
    EXPECT_STREQ("void __cdecl Fetter2<void(Alpha::*)(void) const>(void(Alpha::*)(void) const)", demangled.get());

    demangled.clear();
    demangle(demangled, "??$Fetter2@P8Alpha@@AEXXZ@@YAXP8Alpha@@AEXXZ@Z", true);
    EXPECT_STREQ("void __cdecl Fetter2<void(Alpha::*)(void)>(void(Alpha::*)(void))", demangled.get());

    demangled.clear();
    demangle(demangled, "?Func@@YAXP8ClassSpace@@AEXXZ@Z", true);
    EXPECT_STREQ("void __cdecl Func(void(ClassSpace::*)(void))", demangled.get());

    demangled.clear();
    demangle(demangled, "?Func@@YA?AUBeta@Alpha@@P82@AEXXZ@Z", true);
    EXPECT_STREQ("struct Alpha::Beta __cdecl Func(void(Alpha::*)(void))", demangled.get());

    demangled.clear();
    demangle(demangled,
             "?Set@?$AccessorGetter@U?$CWStringVarGetter@VAutoCatchUpControl@CloakWorks@@@Reflection@CloakWorks@@U?$"
             "CWStringVarSetter@VAutoCatchUpControl@CloakWorks@@@23@@Reflection@CloakWorks@@UBAXPAVObject@23@"
             "ABVVariable@23@@Z",
             true);
    EXPECT_STREQ("void __cdecl public: virtual CloakWorks::Reflection::AccessorGetter<struct "
                 "CloakWorks::Reflection::CWStringVarGetter<class CloakWorks::AutoCatchUpControl>, struct "
                 "AutoCatchUpControl::CWStringVarGetter::CWStringVarSetter<class "
                 "CloakWorks::AutoCatchUpControl>>::Set(class AutoCatchUpControl::CWStringVarGetter::Object*, class "
                 "AutoCatchUpControl::CWStringVarGetter::Variable const&) const",
                 demangled.get());

    demangled.clear();
    demangle(demangled,
             "?GetType@?$AccessorGetter@U?$ContainerGetter@VSkinningControl@CloakWorks@@VSkinningTransform@2@V?$"
             "cwVector@VSkinningTransform@CloakWorks@@@2@@Reflection@CloakWorks@@U?$ContainerSetter@VSkinningControl@"
             "CloakWorks@@VSkinningTransform@2@V?$cwVector@VSkinningTransform@CloakWorks@@@2@@23@@Reflection@"
             "CloakWorks@@UBA?AW4FieldType@23@XZ",
             true);
    EXPECT_STREQ(
        "SkinningControl::ContainerGetter::FieldType __cdecl public: virtual "
        "CloakWorks::Reflection::AccessorGetter<struct CloakWorks::Reflection::ContainerGetter<class "
        "CloakWorks::SkinningControl, class ContainerGetter::SkinningTransform, class ContainerGetter::cwVector<class "
        "CloakWorks::SkinningTransform>>, struct SkinningControl::ContainerGetter::ContainerSetter<class "
        "CloakWorks::SkinningControl, class ContainerGetter::SkinningTransform, class ContainerGetter::cwVector<class "
        "CloakWorks::SkinningTransform>>>::GetType(void) const",
        demangled.get());
}
