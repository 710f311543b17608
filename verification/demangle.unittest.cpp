// No fixture and no allocator scope: nothing here may reach the normal allocator.
#include "core/values/demangle.h"
#include "core/strings/stack_string.h"

#include <gtest/gtest.h>

// A macro, so that a failure shows the line of the row and the expected string as it is written there.
#define EXPECT_TEXT(symbol, verbose, text)                                                                             \
    do                                                                                                                 \
    {                                                                                                                  \
        ZStackString<2048> demangled;                                                                                  \
        demangle(demangled, symbol, verbose);                                                                          \
        EXPECT_STREQ(text, demangled.get());                                                                           \
    } while (false)

TEST(XBox360Demangle, global_func)
{
    EXPECT_TEXT("?myglobal@@YAHMJ@Z", true, "int __cdecl myglobal(float, long)");
    EXPECT_TEXT("?globalAnonymFunc@?A0x47aa92c4@@YAXXZ", true,
                "void __cdecl 'anonymous namespace'::globalAnonymFunc(void)");
}

TEST(XBox360Demangle, member_func)
{
    EXPECT_TEXT("?doTheBar@Beta@Alpha@@QAEHHM@Z", true, "int __thiscall public: Alpha::Beta::doTheBar(int, float)");
}

TEST(XBox360Demangle, member_func_const_volatile)
{
    EXPECT_TEXT("?doTheFoo@Beta@Alpha@@QDEHHM@Z", true,
                "int __thiscall public: Alpha::Beta::doTheFoo(int, float) const volatile");
}

TEST(XBox360Demangle, constructor_destructor)
{
    EXPECT_TEXT("??0Gamma@Beta@Alpha@@QAE@HH@Z", true, "__thiscall public: Alpha::Beta::Gamma::Gamma(int, int)");
    EXPECT_TEXT("??1Gamma@Beta@Alpha@@QAE@XZ", true, "__thiscall public: Alpha::Beta::Gamma::~Gamma(void)");
}

TEST(XBox360Demangle, c_name)
{
    EXPECT_TEXT("_main", true, "main");
    EXPECT_TEXT("a_c_function", true, "a_c_function");
}

TEST(XBox360Demangle, operators)
{
    EXPECT_TEXT("??8Gamma@Beta@Alpha@@QBE_NABU012@@Z", true,
                "bool __thiscall public: Alpha::Beta::Gamma::operator==(struct Alpha::Beta::Gamma const&) const");
    EXPECT_TEXT("??_0Gamma@Beta@Alpha@@QAEAAU012@ABU012@@Z", true,
                "struct Alpha::Beta::Gamma& __thiscall public: Alpha::Beta::Gamma::operator/=(struct "
                "Alpha::Beta::Gamma const&)");
    EXPECT_TEXT("??AAlpha@@QBEPAMH@Z", true, "float* __thiscall public: Alpha::operator[](int) const");
}

TEST(XBox360Demangle, back_references)
{
    EXPECT_TEXT("?SimpleMember@Gamma@Beta@Alpha@@QBEXPAXU23@0U123@0PAHVWhale@3@3@Z", true,
                "void __thiscall public: Alpha::Beta::Gamma::SimpleMember(void*, struct Alpha::Beta, void*, struct "
                "Alpha::Beta::Gamma, void*, int*, class Alpha::Whale, int*) const");
    EXPECT_TEXT("?backref@Gamma@Beta@Alpha@@QAEXU123@AAU123@PAU123@VDolphin@@PAV4@3@Z", true,
                "void __thiscall public: Alpha::Beta::Gamma::backref(struct Alpha::Beta::Gamma, struct "
                "Alpha::Beta::Gamma&, struct Alpha::Beta::Gamma*, class Dolphin, class Dolphin*, class Dolphin)");
}

TEST(XBox360Demangle, type_modifiers)
{
    EXPECT_TEXT("?modif@@YAXAAHABHPAHPBHQAHQBH@Z", true,
                "void __cdecl modif(int&, int const&, int*, int const*, int* const, int const* const)");
    EXPECT_TEXT("?modif@@YAXPBQBHQAPBHQBQAHQBQBH@Z", true,
                "void __cdecl modif(int const* const*, int const** const, int* const* const, int const* const* const)");
}

TEST(XBox360Demangle, static_member)
{
    EXPECT_TEXT("?Simple@MyClass@@SAXXZ", true, "void __cdecl public: static MyClass::Simple(void)");
    EXPECT_TEXT("?Simple@MyClass@@SAXZZ", true, "void __cdecl public: static MyClass::Simple(...)");
}

TEST(XBox360Demangle, template_name)
{
    EXPECT_TEXT("??$myTpl@VMyClass@@UMyStruct@@@@YAPAXHM@Z", true,
                "void* __cdecl myTpl<class MyClass, struct MyStruct>(int, float)");
    EXPECT_TEXT("??$myTpl@HH@@YAPAXHM@Z", true, "void* __cdecl myTpl<int, int>(int, float)");
    EXPECT_TEXT("?mySpl@@YAPAXHM@Z", true, "void* __cdecl mySpl(int, float)");
    EXPECT_TEXT("?funcy@@YAXHV?$MyClass@MN@@PAX@Z", true,
                "void __cdecl funcy(int, class MyClass<float, double>, void*)");
}

TEST(XBox360Demangle, non_verbose)
{
    EXPECT_TEXT("??$myTpl@VMyClass@@UMyStruct@@@@YAPAXHM@Z", false, "void* myTpl<MyClass, MyStruct>(int, float)");
}

TEST(XBox360Demangle, function_pointer)
{
    EXPECT_TEXT("?funcxxone@@YAXHP6AHMN@ZPAX@Z", true, "void __cdecl funcxxone(int, int(*)(float, double), void*)");
    EXPECT_TEXT("?funcxxtwo@@YAXHP6AHMV?$MyClass@MN@@@ZPAX@Z", true,
                "void __cdecl funcxxtwo(int, int(*)(float, class MyClass<float, double>), void*)");
    EXPECT_TEXT("?funcxxthree@@YAXHP8RoClass@@AEHMN@ZPAX@Z", true,
                "void __cdecl funcxxthree(int, int(RoClass::*)(float, double), void*)");
    EXPECT_TEXT("?funcxxfour@@YAXHPAP6AHMN@ZPAX@Z", true,
                "void __cdecl funcxxfour(int, int(**)(float, double), void*)");
    EXPECT_TEXT("??$arrayFunc@P8Alpha@@AEHPAX@Z@@YAXP8Alpha@@AEHPAX@Z@Z", true,
                "void __cdecl arrayFunc<int(Alpha::*)(void*)>(int(Alpha::*)(void*))");
    EXPECT_TEXT("?this_takes_a_c_func@@YAMP6AHXZ@Z", true, "float __cdecl this_takes_a_c_func(int(*)(void))");
}

TEST(XBox360Demangle, enum_stuff)
{
    EXPECT_TEXT("?enumFunc@@YAXPAXW4RoEnum@@PAH@Z", true, "void __cdecl enumFunc(void*, RoEnum, int*)");
}

TEST(XBox360Demangle, array_stuff)
{
    EXPECT_TEXT("?arrayFunc@@YAXQAH@Z", true, "void __cdecl arrayFunc(int* const)");
    EXPECT_TEXT("?arrayFunc@@YAXQAP6AHPAX@Z@Z", true, "void __cdecl arrayFunc(int(** const)(void*))");
    EXPECT_TEXT("??$arrayFunc@P6AHPAX@Z@@YAXQAP6AHPAX@Z@Z", true,
                "void __cdecl arrayFunc<int(*)(void*)>(int(** const)(void*))");
}

TEST(XBox360Demangle, variables)
{
    EXPECT_TEXT("?globalVar@@3HA", true, "int globalVar");
    EXPECT_TEXT("?staticMember@Alpha@@2HA", true, "int Alpha::staticMember");
    EXPECT_TEXT("?staticFuncVar@?1??MyFunc@@YAXXZ@4HA", true, "int 'void __cdecl MyFunc(void)'::'2'::staticFuncVar");
    EXPECT_TEXT("?anonyspace@?A0x47aa92c4@@3HA", true, "int 'anonymous namespace'::anonyspace");
}

TEST(XBox360Demangle, from_real_life)
{
    EXPECT_TEXT("?vUnitNegZ@?1??WLoadNegUnitZ@@YA?AUfloat4@@XZ@4U2@B", true,
                "struct float4 'struct float4 __cdecl WLoadNegUnitZ(void)'::'2'::vUnitNegZ");
    EXPECT_TEXT(
        "?PERMUTE_1Y0X0W0W_const@?BC@??TriBoxOverlap@OBBCollider@Opcode@@IAAHABVPoint@IceMaths@@00ABU__vector4@@"
        "1111@Z@4UXMVECTORU32@@B",
        true,
        "struct XMVECTORU32 'int __cdecl protected: Opcode::OBBCollider::TriBoxOverlap(class IceMaths::Point const&, "
        "class IceMaths::Point const&, class IceMaths::Point const&, struct __vector4 const&, struct __vector4 const&, "
        "struct __vector4 const&, struct __vector4 const&, struct __vector4 const&)'::'13'::PERMUTE_1Y0X0W0W_const");
    EXPECT_TEXT(
        "?InvokeAll@?$ZEvent2@W4ENetworkControlParam@@ABVZVariantRef@@@@ABAXW4ENetworkControlParam@@ABVZVariantRef@@@Z",
        true,
        "void __cdecl privat: ZEvent2<ENetworkControlParam, class ZVariantRef "
        "const&>::InvokeAll(ENetworkControlParam, class ZVariantRef const&) const");
    EXPECT_TEXT(
        "??0?$GetterFieldMaker@P8SkinningTransform@CloakWorks@@BA?AVArray@Reflection@2@XZP812@AAXABV342@@Z@"
        "Reflection@CloakWorks@@QAA@PBDP8SkinningTransform@2@BA?AVArray@12@XZP832@AAXABV412@@Z@Z",
        true,
        "__cdecl public: CloakWorks::Reflection::GetterFieldMaker<class "
        "CloakWorks::Reflection::Array(CloakWorks::SkinningTransform::*)(void) const, "
        "void(CloakWorks::SkinningTransform::*)(class CloakWorks::Reflection::Array const&)>::GetterFieldMaker<class "
        "CloakWorks::Reflection::Array(CloakWorks::SkinningTransform::*)(void) const, "
        "void(CloakWorks::SkinningTransform::*)(class CloakWorks::Reflection::Array const&)>(char const*, class "
        "CloakWorks::SkinningTransform::Array(CloakWorks::SkinningTransform::*)(void) const, "
        "void(CloakWorks::Array::*)(class CloakWorks::SkinningTransform::Reflection const&))");
    EXPECT_TEXT("??$Fetter2@P8Skin@Cloak@@BEXXZ@@YAXP8Skin@Cloak@@BEXXZ@Z", true,
                "void __cdecl Fetter2<void(Cloak::Skin::*)(void) const>(void(Cloak::Skin::*)(void) const)");
    EXPECT_TEXT("??$Fetter2@P8Alpha@@BEXXZ@@YAXP8Alpha@@BEXXZ@Z", true,
                "void __cdecl Fetter2<void(Alpha::*)(void) const>(void(Alpha::*)(void) const)");
    EXPECT_TEXT("??$Fetter2@P8Alpha@@AEXXZ@@YAXP8Alpha@@AEXXZ@Z", true,
                "void __cdecl Fetter2<void(Alpha::*)(void)>(void(Alpha::*)(void))");
    EXPECT_TEXT("?Func@@YAXP8ClassSpace@@AEXXZ@Z", true, "void __cdecl Func(void(ClassSpace::*)(void))");
    EXPECT_TEXT("?Func@@YA?AUBeta@Alpha@@P82@AEXXZ@Z", true, "struct Alpha::Beta __cdecl Func(void(Alpha::*)(void))");
    EXPECT_TEXT("?Set@?$AccessorGetter@U?$CWStringVarGetter@VAutoCatchUpControl@CloakWorks@@@Reflection@CloakWorks@@U?$"
                "CWStringVarSetter@VAutoCatchUpControl@CloakWorks@@@23@@Reflection@CloakWorks@@UBAXPAVObject@23@"
                "ABVVariable@23@@Z",
                true,
                "void __cdecl public: virtual CloakWorks::Reflection::AccessorGetter<struct "
                "CloakWorks::Reflection::CWStringVarGetter<class CloakWorks::AutoCatchUpControl>, struct "
                "AutoCatchUpControl::CWStringVarGetter::CWStringVarSetter<class "
                "CloakWorks::AutoCatchUpControl>>::Set(class AutoCatchUpControl::CWStringVarGetter::Object*, class "
                "AutoCatchUpControl::CWStringVarGetter::Variable const&) const");
    EXPECT_TEXT(
        "?GetType@?$AccessorGetter@U?$ContainerGetter@VSkinningControl@CloakWorks@@VSkinningTransform@2@V?$"
        "cwVector@VSkinningTransform@CloakWorks@@@2@@Reflection@CloakWorks@@U?$ContainerSetter@VSkinningControl@"
        "CloakWorks@@VSkinningTransform@2@V?$cwVector@VSkinningTransform@CloakWorks@@@2@@23@@Reflection@"
        "CloakWorks@@UBA?AW4FieldType@23@XZ",
        true,
        "SkinningControl::ContainerGetter::FieldType __cdecl public: virtual "
        "CloakWorks::Reflection::AccessorGetter<struct CloakWorks::Reflection::ContainerGetter<class "
        "CloakWorks::SkinningControl, class ContainerGetter::SkinningTransform, class ContainerGetter::cwVector<class "
        "CloakWorks::SkinningTransform>>, struct SkinningControl::ContainerGetter::ContainerSetter<class "
        "CloakWorks::SkinningControl, class ContainerGetter::SkinningTransform, class ContainerGetter::cwVector<class "
        "CloakWorks::SkinningTransform>>>::GetType(void) const");
}
