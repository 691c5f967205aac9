// Prints what the system reads in a type library, a line each:
//
//     dump_type_library FILE.tlb
//     library NAME GUID
//     enum NAME                       value NAME NUMBER
//     record NAME SIZE                field NAME OFFSET TYPE
//     interface NAME GUID BASE        method NAME SLOT PARAMETERS
//     class NAME GUID
//
// Everything below a type stands behind it. Built and run by test_type_library.py.
#include <windows.h>

#include <oleauto.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace {

void Check(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        throw std::runtime_error(what);
    }
}

std::string Narrow(const wchar_t* text) {
    std::string narrow;
    for (; text != nullptr && *text != 0; ++text) {
        narrow += *text < 128 ? static_cast<char>(*text) : '?';
    }
    return narrow;
}

std::string NameOf(ITypeInfo* type, MEMBERID member = MEMBERID_NIL) {
    BSTR name = nullptr;
    Check(type->GetDocumentation(member, &name, nullptr, nullptr, nullptr), "a name cannot be read");
    std::string narrow = Narrow(name);
    SysFreeString(name);
    return narrow;
}

std::string TextOf(REFGUID guid) {
    wchar_t text[40] = {};
    (void)StringFromGUID2(guid, text, 40);
    return Narrow(text);
}

// The type's VARTYPE, with what it points to or consists of.
std::string TypeText(ITypeInfo* where, const TYPEDESC& type) {
    switch (type.vt) {
    case VT_PTR:
        return TypeText(where, *type.lptdesc) + "*";
    case VT_CARRAY:
        return TypeText(where, type.lpadesc->tdescElem) + "[" + std::to_string(type.lpadesc->rgbounds[0].cElements) +
               "]";
    case VT_USERDEFINED: {
        ComPtr<ITypeInfo> other;
        Check(where->GetRefTypeInfo(type.hreftype, &other), "a type that is referred to is missing");
        return NameOf(other.Get());
    }
    default:
        return std::to_string(type.vt);
    }
}

void DumpVariables(ITypeInfo* type, const TYPEATTR& attributes) {
    for (UINT i = 0; i < attributes.cVars; ++i) {
        VARDESC* variable = nullptr;
        Check(type->GetVarDesc(i, &variable), "a field cannot be read");
        const std::string name = NameOf(type, variable->memid);
        if (variable->varkind == VAR_PERINSTANCE) {
            std::printf("field %s %lu %s\n", name.c_str(), variable->oInst,
                        TypeText(type, variable->elemdescVar.tdesc).c_str());
        } else {
            std::printf("value %s %ld\n", name.c_str(), variable->lpvarValue->lVal);
        }
        type->ReleaseVarDesc(variable);
    }
}

void DumpMethods(ITypeInfo* type, const TYPEATTR& attributes) {
    for (UINT i = 0; i < attributes.cFuncs; ++i) {
        FUNCDESC* method = nullptr;
        Check(type->GetFuncDesc(i, &method), "a method cannot be read");
        std::string parameters;
        for (SHORT p = 0; p < method->cParams; ++p) {
            parameters += " " + TypeText(type, method->lprgelemdescParam[p].tdesc);
        }
        std::printf("method %s %d%s\n", NameOf(type, method->memid).c_str(),
                    static_cast<int>(method->oVft / static_cast<SHORT>(sizeof(void*))), parameters.c_str());
        type->ReleaseFuncDesc(method);
    }
}

std::string BaseOf(ITypeInfo* type, const TYPEATTR& attributes) {
    if (attributes.cImplTypes == 0) {
        return "-";
    }
    HREFTYPE reference = 0;
    ComPtr<ITypeInfo> base;
    Check(type->GetRefTypeOfImplType(0, &reference), "a base cannot be found");
    Check(type->GetRefTypeInfo(reference, &base), "a base cannot be read");
    return NameOf(base.Get());
}

void DumpType(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    Check(type->GetTypeAttr(&attributes), "a type cannot be read");
    const std::string name = NameOf(type);
    const std::string guid = TextOf(attributes->guid);
    switch (attributes->typekind) {
    case TKIND_ENUM:
        std::printf("enum %s\n", name.c_str());
        break;
    case TKIND_RECORD:
        std::printf("record %s %lu\n", name.c_str(), attributes->cbSizeInstance);
        break;
    case TKIND_INTERFACE:
        std::printf("interface %s %s %s\n", name.c_str(), guid.c_str(), BaseOf(type, *attributes).c_str());
        break;
    case TKIND_COCLASS:
        std::printf("class %s %s\n", name.c_str(), guid.c_str());
        break;
    default:
        std::printf("other %s %d\n", name.c_str(), attributes->typekind);
    }
    DumpVariables(type, *attributes);
    DumpMethods(type, *attributes);
    type->ReleaseTypeAttr(attributes);
}

void DumpLibrary(const wchar_t* file) {
    ComPtr<ITypeLib> library;
    Check(LoadTypeLibEx(file, REGKIND_NONE, &library), "the type library cannot be loaded");
    TLIBATTR* attributes = nullptr;
    Check(library->GetLibAttr(&attributes), "the type library has no attributes");
    BSTR name = nullptr;
    Check(library->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), "the type library has no name");
    std::printf("library %s %s %d.%d\n", Narrow(name).c_str(), TextOf(attributes->guid).c_str(),
                attributes->wMajorVerNum, attributes->wMinorVerNum);
    SysFreeString(name);
    library->ReleaseTLibAttr(attributes);
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ComPtr<ITypeInfo> type;
        Check(library->GetTypeInfo(i, &type), "a type cannot be read");
        DumpType(type.Get());
    }
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 2) {
        std::fprintf(stderr, "usage: dump_type_library FILE.tlb\n");
        return 2;
    }
    try {
        DumpLibrary(arguments[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "dump_type_library: %s\n", error.what());
        return 2;
    }
    return 0;
}
