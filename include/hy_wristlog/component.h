/// The library as an in-process component, for hosts in any language that can call C. Usable from C11 and
/// C++.
///
/// `DllGetClassObject` gives a class factory for each of the four classes; the factory makes objects; an
/// object is used through its dispatch interface: members are found by name (`GetIDsOfNames`), read, written
/// and called by number (`Invoke`), and listed by its type information. `Class_VardenLogger` and
/// `Class_Pendrel` tell their events to sinks that are connected through connection points.
///
/// Interfaces, their identifiers and the layout of variants, strings, arrays and type descriptions are those
/// of the binary component model that such hosts already speak; functions take the C calling convention of
/// the platform. Text is UTF-16 in the machine's byte order. Memory that changes hands was allocated with
/// `malloc`: whoever receives a string, an array or a description frees it, with the functions at the end of
/// this file or with `free`.
///
/// An object belongs to the thread that made it, and so do its connection points and enumerators. `AddRef`
/// and `Release` may come from any thread; every other call from another thread is answered with
/// HY_RPC_E_WRONG_THREAD. When another thread releases the last reference, the object ends at the owner's
/// next call into the library, or with the owner. Class factories and type information may be used by any
/// thread. Null pointers are answered with HY_E_POINTER. Calls on a released object are answered with
/// HY_RPC_E_DISCONNECTED until its memory is used for another object.
///
/// Values. Numbers are converted to the type of a property or argument (to the nearest whole number, halves
/// to even; HY_DISP_E_OVERFLOW when they do not fit), numeric text and truth values too; dates come as
/// HY_VT_DATE, enumerations as HY_VT_I4. Text keeps NULs inside it; an unpaired surrogate becomes U+FFFD.
/// Arrays are of HyVariant, from 0, HY_VT_EMPTY where nothing was stored; an array that was never filled is
/// HY_VT_EMPTY; one that the recording has no values for has one empty element with both bounds -1. A long
/// one is read faster as plain numbers, through HY_IID_SERIES_READER. Objects as arguments must be of this
/// library; others are answered with HY_DISP_E_TYPEMISMATCH.
///
/// Variables for results are passed by reference: HY_VT_BYREF | HY_VT_VARIANT, or HY_VT_BYREF with the
/// argument's own type. They must be initialised, since the value that they hold is freed. An output that is
/// passed by value is lost. An object of `Class_Main` or a logger that is asked for a second workflow inside
/// an event of the first one refuses with the failure InvalidCall.
///
/// Events. `Class_VardenLogger` and `Class_Pendrel` tell their own. A workflow makes its own logger, so an
/// object of `Class_Main` has a connection point for HY_DIID_VARDEN_LOGGER_EVENTS too: its sinks hear every
/// logger that the object works with, from the first moment of a workflow. A second connection point, for
/// HY_DIID_HOST_EVENTS, tells the host while a workflow waits to serve its own events, where it may ask for
/// an abort, and how far a download has come. Inside any event a host may call `AbortComms`, connect and
/// disconnect sinks, and release objects.
#ifndef HY_WRISTLOG_COMPONENT_H
#define HY_WRISTLOG_COMPONENT_H

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#if defined(__cplusplus)
extern "C" {
#define HY_STATIC_ASSERT static_assert
#else
#define HY_STATIC_ASSERT _Static_assert
#endif
#define HY_COMPONENT_API __attribute__((visibility("default")))

/// Negative for failures.
typedef int32_t HyResult;

#define HY_S_OK ((HyResult)0)
#define HY_S_FALSE ((HyResult)1)
#define HY_E_NOTIMPL ((HyResult)0x80004001)
#define HY_E_NOINTERFACE ((HyResult)0x80004002)
#define HY_E_POINTER ((HyResult)0x80004003)
#define HY_E_FAIL ((HyResult)0x80004005)
#define HY_E_UNEXPECTED ((HyResult)0x8000FFFF)
#define HY_E_OUTOFMEMORY ((HyResult)0x8007000E)
#define HY_E_INVALIDARG ((HyResult)0x80070057)
#define HY_RPC_E_DISCONNECTED ((HyResult)0x80010108)
#define HY_RPC_E_WRONG_THREAD ((HyResult)0x8001010E)
#define HY_DISP_E_UNKNOWNINTERFACE ((HyResult)0x80020001)
#define HY_DISP_E_MEMBERNOTFOUND ((HyResult)0x80020003)
#define HY_DISP_E_PARAMNOTFOUND ((HyResult)0x80020004)
#define HY_DISP_E_TYPEMISMATCH ((HyResult)0x80020005)
#define HY_DISP_E_UNKNOWNNAME ((HyResult)0x80020006)
#define HY_DISP_E_NONAMEDARGS ((HyResult)0x80020007)
#define HY_DISP_E_BADVARTYPE ((HyResult)0x80020008)
#define HY_DISP_E_EXCEPTION ((HyResult)0x80020009)
#define HY_DISP_E_OVERFLOW ((HyResult)0x8002000A)
#define HY_DISP_E_BADINDEX ((HyResult)0x8002000B)
#define HY_DISP_E_BADPARAMCOUNT ((HyResult)0x8002000E)
#define HY_DISP_E_PARAMNOTOPTIONAL ((HyResult)0x8002000F)
#define HY_TYPE_E_ELEMENTNOTFOUND ((HyResult)0x8002802B)
#define HY_CLASS_E_NOAGGREGATION ((HyResult)0x80040110)
#define HY_CLASS_E_CLASSNOTAVAILABLE ((HyResult)0x80040111)
#define HY_CONNECT_E_NOCONNECTION ((HyResult)0x80040200)
#define HY_CONNECT_E_ADVISELIMIT ((HyResult)0x80040201)
#define HY_CONNECT_E_CANNOTCONNECT ((HyResult)0x80040202)
#define HY_SELFREG_E_CLASS ((HyResult)0x80040201)

/// The failure of an object is told as HY_DISP_E_EXCEPTION with an HyExcepInfo whose `scode` is this base
/// plus the failure's number when that is from 1 to 65535, otherwise the number itself.
#define HY_FAILURE_BASE ((HyResult)0x800A0000)

typedef struct HyGuid {
  uint32_t Data1;
  uint16_t Data2, Data3;
  uint8_t Data4[8];
} HyGuid;

static const HyGuid HY_IID_UNKNOWN = {0x00000000, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const HyGuid HY_IID_CLASS_FACTORY = {0x00000001, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const HyGuid HY_IID_DISPATCH = {0x00020400, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const HyGuid HY_IID_TYPE_INFO = {0x00020401, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
static const HyGuid HY_IID_ENUM_CONNECTIONS = {
    0xB196B287, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
static const HyGuid HY_IID_CONNECTION_POINT = {
    0xB196B286, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
static const HyGuid HY_IID_ENUM_CONNECTION_POINTS = {
    0xB196B285, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
static const HyGuid HY_IID_CONNECTION_POINT_CONTAINER = {
    0xB196B284, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
static const HyGuid HY_IID_PROVIDE_CLASS_INFO = {
    0xB196B283, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
/// Every object of the four classes has it.
static const HyGuid HY_IID_SERIES_READER = {
    0x9b1f6d2c, 0x4e57, 0x4c8a, {0xa1, 0x3e, 0x70, 0xd8, 0x25, 0x6b, 0xf4, 0x19}};
static const HyGuid HY_GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

/// The classes, the dispatch interfaces of their objects, and their event sets.
static const HyGuid HY_CLSID_MAIN = {
    0x7857d1d2, 0x118b, 0x4fa4, {0xba, 0xb5, 0xc0, 0x21, 0x13, 0xe3, 0xaf, 0xd4}};
static const HyGuid HY_CLSID_VARDEN_LOGGER = {
    0x3a46e78c, 0xe35a, 0x4004, {0x89, 0x7d, 0x39, 0x1e, 0x0b, 0x1d, 0xa3, 0x57}};
static const HyGuid HY_CLSID_PENDREL = {
    0xf8482f2a, 0x1519, 0x4c5b, {0x83, 0xa7, 0x5b, 0x67, 0x44, 0x1a, 0xab, 0xca}};
static const HyGuid HY_CLSID_SUBJECT = {
    0xd273891e, 0xe0f6, 0x44a5, {0x9b, 0x7f, 0x19, 0x6e, 0x7a, 0xe7, 0x17, 0x1b}};
static const HyGuid HY_IID_MAIN = {
    0xf4de2300, 0x9374, 0x4661, {0xb7, 0x85, 0xfc, 0x3b, 0x91, 0x32, 0x46, 0x0b}};
static const HyGuid HY_IID_VARDEN_LOGGER = {
    0xb7e7cecc, 0xc03e, 0x4dee, {0xb6, 0x7e, 0x96, 0xe3, 0x44, 0x7a, 0xe7, 0x3d}};
static const HyGuid HY_IID_PENDREL = {
    0x5c8e411a, 0x129a, 0x4515, {0xb2, 0x1b, 0xdb, 0x5d, 0x80, 0xd7, 0x22, 0x02}};
static const HyGuid HY_IID_SUBJECT = {
    0x40d5b2c2, 0x97fa, 0x49cf, {0x9f, 0x03, 0xc3, 0x50, 0x0d, 0x84, 0x72, 0xde}};
static const HyGuid HY_DIID_VARDEN_LOGGER_EVENTS = {
    0x02832944, 0x44d6, 0x455e, {0xa5, 0xc1, 0x9f, 0x2b, 0xf8, 0x7a, 0xa1, 0x53}};
static const HyGuid HY_DIID_PENDREL_EVENTS = {
    0xaa92b71c, 0xe9b7, 0x43f1, {0xbd, 0x99, 0x92, 0xb3, 0xe9, 0xd7, 0xc2, 0x3d}};
/// The events of `Class_Main` for its host during a workflow: ServeEvents() and
/// DownloadProgress(BytesSoFar, BytesExpected); BytesExpected is 0 when the number is not known.
static const HyGuid HY_DIID_HOST_EVENTS = {
    0x5d0f3c6e, 0x27b4, 0x4f0a, {0x93, 0x61, 0x8a, 0x4c, 0xe2, 0x15, 0x70, 0xbd}};
enum { HY_EVENT_SERVE_EVENTS = 1, HY_EVENT_DOWNLOAD_PROGRESS = 2 };

/// Members of a logger's event set. CommEventError(ErrorNum, ByRef ErrorDescription), CommProgress(ByRef
/// ProgressText), AbortAcknowledged().
enum { HY_EVENT_COMM_EVENT_ERROR = 1, HY_EVENT_COMM_PROGRESS = 2, HY_EVENT_ABORT_ACKNOWLEDGED = 3 };

/// UTF-16 that ends with a NUL. The four bytes before the first character hold the length in bytes, without
/// the NUL. A null pointer is the empty string.
typedef uint16_t* HyString;

/// The type of a value. HY_VT_ARRAY and HY_VT_BYREF are flags that are added to another type.
enum {
  HY_VT_EMPTY = 0,
  HY_VT_NULL = 1,
  HY_VT_I2 = 2,
  HY_VT_I4 = 3,
  HY_VT_R4 = 4,
  HY_VT_R8 = 5,
  HY_VT_CY = 6,
  HY_VT_DATE = 7,
  HY_VT_BSTR = 8,
  HY_VT_DISPATCH = 9,
  HY_VT_ERROR = 10,
  HY_VT_BOOL = 11,
  HY_VT_VARIANT = 12,
  HY_VT_UNKNOWN = 13,
  HY_VT_DECIMAL = 14,
  HY_VT_I1 = 16,
  HY_VT_UI1 = 17,
  HY_VT_UI2 = 18,
  HY_VT_UI4 = 19,
  HY_VT_I8 = 20,
  HY_VT_UI8 = 21,
  HY_VT_INT = 22,
  HY_VT_UINT = 23,
  HY_VT_VOID = 24,
  HY_VT_HRESULT = 25,
  HY_VT_PTR = 26,
  HY_VT_SAFEARRAY = 27,
  HY_VT_USERDEFINED = 29,
  HY_VT_ARRAY = 0x2000,
  HY_VT_BYREF = 0x4000,
  HY_VT_TYPEMASK = 0x0FFF
};

#define HY_TRUE ((int16_t)-1)
#define HY_FALSE ((int16_t)0)

typedef struct HyArrayBound {
  uint32_t cElements;
  int32_t lLbound;
} HyArrayBound;

/// An array. The arrays that the library makes have one dimension, and elements of type HyVariant unless
/// ReadSeries made them.
typedef struct HyArray {
  uint16_t cDims;
  uint16_t fFeatures;
  uint32_t cbElements;
  uint32_t cLocks;
  void* pvData;
  HyArrayBound rgsabound[1];
} HyArray;

/// Bits of `fFeatures`: the type of the elements.
enum { HY_FADF_BSTR = 0x100, HY_FADF_UNKNOWN = 0x200, HY_FADF_DISPATCH = 0x400, HY_FADF_VARIANT = 0x800 };

typedef struct HyUnknown HyUnknown;
typedef struct HyDispatch HyDispatch;
typedef struct HyTypeInfo HyTypeInfo;

/// A value and its type. Dates are day counts from 30 December 1899. A missing optional argument is
/// HY_VT_ERROR with `scode` HY_DISP_E_PARAMNOTFOUND.
typedef struct HyVariant {
  uint16_t vt;
  uint16_t wReserved1, wReserved2, wReserved3;
  union {
    int64_t llVal;
    int32_t lVal;
    uint8_t bVal;
    int16_t iVal;
    float fltVal;
    double dblVal;
    int16_t boolVal;
    HyResult scode;
    int64_t cyVal;
    double date;
    HyString bstrVal;
    HyUnknown* punkVal;
    HyDispatch* pdispVal;
    HyArray* parray;
    uint8_t* pbVal;
    int16_t* piVal;
    int32_t* plVal;
    int64_t* pllVal;
    float* pfltVal;
    double* pdblVal;
    int16_t* pboolVal;
    double* pdate;
    HyString* pbstrVal;
    HyUnknown** ppunkVal;
    HyDispatch** ppdispVal;
    HyArray** pparray;
    struct HyVariant* pvarVal;
    void* byref;
    int8_t cVal;
    uint16_t uiVal;
    uint32_t ulVal;
    uint64_t ullVal;
    int32_t intVal;
    uint32_t uintVal;
    struct {
      void* pvRecord;
      void* pRecInfo;
    } record;
  };
} HyVariant;

HY_STATIC_ASSERT(sizeof(HyVariant) == 8 + 2 * sizeof(void*), "a variant is a type and two pointers' worth");

/// The arguments of a call: first the named ones, then the others, the last of these first.
typedef struct HyDispParams {
  HyVariant* rgvarg;
  int32_t* rgdispidNamedArgs;
  uint32_t cArgs;
  uint32_t cNamedArgs;
} HyDispParams;

/// How a call failed. The caller frees the strings.
typedef struct HyExcepInfo {
  uint16_t wCode;
  uint16_t wReserved;
  HyString bstrSource;
  HyString bstrDescription;
  HyString bstrHelpFile;
  uint32_t dwHelpContext;
  void* pvReserved;
  HyResult (*pfnDeferredFillIn)(struct HyExcepInfo*);
  HyResult scode;
} HyExcepInfo;

/// What `Invoke` is asked to do. A host that does not know whether a member is a method or a property may ask
/// for both; when it asks for reading and something else, a property is read.
enum {
  HY_DISPATCH_METHOD = 1,
  HY_DISPATCH_PROPERTYGET = 2,
  HY_DISPATCH_PROPERTYPUT = 4,
  HY_DISPATCH_PROPERTYPUTREF = 8
};

/// HY_DISPID_UNKNOWN stands for "no member". HY_DISPID_PROPERTYPUT names the argument that carries the new
/// value of a property.
enum { HY_DISPID_UNKNOWN = -1, HY_DISPID_PROPERTYPUT = -3 };

// NOLINTBEGIN(bugprone-macro-parentheses)
#define HY_UNKNOWN_MEMBERS(Self)                                                           \
  HyResult (*QueryInterface)(Self * self, const HyGuid* interfaceId, void** objectOrNull); \
  uint32_t (*AddRef)(Self * self);                                                         \
  uint32_t (*Release)(Self * self);
// NOLINTEND(bugprone-macro-parentheses)

typedef struct HyUnknownVtable {
  HY_UNKNOWN_MEMBERS(HyUnknown)
} HyUnknownVtable;
struct HyUnknown {
  const HyUnknownVtable* lpVtbl;
};

typedef struct HyClassFactory HyClassFactory;
typedef struct HyClassFactoryVtable {
  HY_UNKNOWN_MEMBERS(HyClassFactory)
  HyResult (*CreateInstance)(HyClassFactory* self, HyUnknown* outer, const HyGuid* interfaceId,
                             void** object);
  HyResult (*LockServer)(HyClassFactory* self, int32_t lock);
} HyClassFactoryVtable;
struct HyClassFactory {
  const HyClassFactoryVtable* lpVtbl;
};

typedef struct HyDispatchVtable {
  HY_UNKNOWN_MEMBERS(HyDispatch)
  HyResult (*GetTypeInfoCount)(HyDispatch* self, uint32_t* count);
  HyResult (*GetTypeInfo)(HyDispatch* self, uint32_t index, uint32_t locale, HyTypeInfo** typeInfo);
  /// `names` holds the name of a member and then names of its arguments. Unknown ones get HY_DISPID_UNKNOWN.
  HyResult (*GetIDsOfNames)(HyDispatch* self, const HyGuid* reserved, uint16_t** names, uint32_t count,
                            uint32_t locale, int32_t* ids);
  HyResult (*Invoke)(HyDispatch* self, int32_t member, const HyGuid* reserved, uint32_t locale,
                     uint16_t flags, HyDispParams* params, HyVariant* result, HyExcepInfo* exception,
                     uint32_t* argumentInError);
} HyDispatchVtable;
struct HyDispatch {
  const HyDispatchVtable* lpVtbl;
};

typedef struct HyConnectData {
  HyUnknown* pUnk;
  uint32_t dwCookie;
} HyConnectData;

typedef struct HyEnumConnections HyEnumConnections;
typedef struct HyEnumConnectionsVtable {
  HY_UNKNOWN_MEMBERS(HyEnumConnections)
  HyResult (*Next)(HyEnumConnections* self, uint32_t count, HyConnectData* connections, uint32_t* fetched);
  HyResult (*Skip)(HyEnumConnections* self, uint32_t count);
  HyResult (*Reset)(HyEnumConnections* self);
  HyResult (*Clone)(HyEnumConnections* self, HyEnumConnections** clone);
} HyEnumConnectionsVtable;
struct HyEnumConnections {
  const HyEnumConnectionsVtable* lpVtbl;
};

typedef struct HyConnectionPointContainer HyConnectionPointContainer;
typedef struct HyConnectionPoint HyConnectionPoint;
typedef struct HyConnectionPointVtable {
  HY_UNKNOWN_MEMBERS(HyConnectionPoint)
  HyResult (*GetConnectionInterface)(HyConnectionPoint* self, HyGuid* interfaceId);
  HyResult (*GetConnectionPointContainer)(HyConnectionPoint* self, HyConnectionPointContainer** container);
  /// The sink must have the interface of the event set, or HY_IID_DISPATCH.
  HyResult (*Advise)(HyConnectionPoint* self, HyUnknown* sink, uint32_t* cookie);
  HyResult (*Unadvise)(HyConnectionPoint* self, uint32_t cookie);
  HyResult (*EnumConnections)(HyConnectionPoint* self, HyEnumConnections** connections);
} HyConnectionPointVtable;
struct HyConnectionPoint {
  const HyConnectionPointVtable* lpVtbl;
};

typedef struct HyEnumConnectionPoints HyEnumConnectionPoints;
typedef struct HyEnumConnectionPointsVtable {
  HY_UNKNOWN_MEMBERS(HyEnumConnectionPoints)
  HyResult (*Next)(HyEnumConnectionPoints* self, uint32_t count, HyConnectionPoint** points,
                   uint32_t* fetched);
  HyResult (*Skip)(HyEnumConnectionPoints* self, uint32_t count);
  HyResult (*Reset)(HyEnumConnectionPoints* self);
  HyResult (*Clone)(HyEnumConnectionPoints* self, HyEnumConnectionPoints** clone);
} HyEnumConnectionPointsVtable;
struct HyEnumConnectionPoints {
  const HyEnumConnectionPointsVtable* lpVtbl;
};

typedef struct HyConnectionPointContainerVtable {
  HY_UNKNOWN_MEMBERS(HyConnectionPointContainer)
  HyResult (*EnumConnectionPoints)(HyConnectionPointContainer* self, HyEnumConnectionPoints** points);
  HyResult (*FindConnectionPoint)(HyConnectionPointContainer* self, const HyGuid* interfaceId,
                                  HyConnectionPoint** point);
} HyConnectionPointContainerVtable;
struct HyConnectionPointContainer {
  const HyConnectionPointContainerVtable* lpVtbl;
};

typedef struct HyProvideClassInfo HyProvideClassInfo;
typedef struct HyProvideClassInfoVtable {
  HY_UNKNOWN_MEMBERS(HyProvideClassInfo)
  HyResult (*GetClassInfo)(HyProvideClassInfo* self, HyTypeInfo** typeInfo);
} HyProvideClassInfoVtable;
struct HyProvideClassInfo {
  const HyProvideClassInfoVtable* lpVtbl;
};

typedef struct HySeriesReader HySeriesReader;
typedef struct HySeriesReaderVtable {
  HY_UNKNOWN_MEMBERS(HySeriesReader)
  /// Copies the series of a property, from 0: HY_VT_ARRAY with HY_VT_I4 for activity and steps, HY_VT_R4 for
  /// light, HY_VT_I1 (1 and 0) for markers and wrist, HY_VT_UI1 for bytes, HY_VT_DATE for times. Where
  /// nothing was stored stand INT32_MIN, NaN and -1. HY_VT_EMPTY for a series without elements, and for one
  /// that the recording has no values for. HY_DISP_E_MEMBERNOTFOUND for what is no series.
  HyResult (*ReadSeries)(HySeriesReader* self, int32_t member, HyVariant* series);
} HySeriesReaderVtable;
struct HySeriesReader {
  const HySeriesReaderVtable* lpVtbl;
};

/// The type of a value. With HY_VT_PTR and HY_VT_SAFEARRAY `lptdesc` is the type pointed to, with
/// HY_VT_USERDEFINED `hreftype` is a reference for `GetRefTypeInfo`.
typedef struct HyTypeDesc {
  union {
    struct HyTypeDesc* lptdesc;
    void* lpadesc;
    uint32_t hreftype;
  };
  uint16_t vt;
} HyTypeDesc;

typedef struct HyParamDesc {
  void* pparamdescex;
  uint16_t wParamFlags;
} HyParamDesc;

/// Bits of `wParamFlags`.
enum {
  HY_PARAMFLAG_FIN = 0x1,
  HY_PARAMFLAG_FOUT = 0x2,
  HY_PARAMFLAG_FRETVAL = 0x8,
  HY_PARAMFLAG_FOPT = 0x10
};

typedef struct HyElemDesc {
  HyTypeDesc tdesc;
  HyParamDesc paramdesc;
} HyElemDesc;

/// One way of calling a member; a property that can be read and written has two.
typedef struct HyFuncDesc {
  int32_t memid;
  HyResult* lprgscode;
  HyElemDesc* lprgelemdescParam;
  int32_t funckind;
  int32_t invkind;
  int32_t callconv;
  int16_t cParams;
  int16_t cParamsOpt;
  int16_t oVft;
  int16_t cScodes;
  HyElemDesc elemdescFunc;
  uint16_t wFuncFlags;
} HyFuncDesc;

enum { HY_FUNC_DISPATCH = 4, HY_CC_CDECL = 1 };

/// What a type information describes.
enum { HY_TKIND_DISPATCH = 4, HY_TKIND_COCLASS = 5 };
/// Bits of `wTypeFlags` and of an implemented type.
enum { HY_TYPEFLAG_FCANCREATE = 0x2, HY_TYPEFLAG_FDISPATCHABLE = 0x1000 };
enum { HY_IMPLTYPEFLAG_FDEFAULT = 0x1, HY_IMPLTYPEFLAG_FSOURCE = 0x2 };

typedef struct HyTypeAttr {
  HyGuid guid;
  uint32_t lcid;
  uint32_t dwReserved;
  int32_t memidConstructor;
  int32_t memidDestructor;
  uint16_t* lpstrSchema;
  uint32_t cbSizeInstance;
  int32_t typekind;
  uint16_t cFuncs;
  uint16_t cVars;
  uint16_t cImplTypes;
  uint16_t cbSizeVft;
  uint16_t cbAlignment;
  uint16_t wTypeFlags;
  uint16_t wMajorVerNum;
  uint16_t wMinorVerNum;
  HyTypeDesc tdescAlias;
  struct {
    uintptr_t dwReserved;
    uint16_t wIDLFlags;
  } idldescType;
} HyTypeAttr;

/// Describes a dispatch interface (its members), an event set, or a class (its interface and event set). The
/// members that need a type library answer HY_E_NOTIMPL.
typedef struct HyTypeInfoVtable {
  HY_UNKNOWN_MEMBERS(HyTypeInfo)
  HyResult (*GetTypeAttr)(HyTypeInfo* self, HyTypeAttr** attributes);
  HyResult (*GetTypeComp)(HyTypeInfo* self, void** comp);
  HyResult (*GetFuncDesc)(HyTypeInfo* self, uint32_t index, HyFuncDesc** description);
  HyResult (*GetVarDesc)(HyTypeInfo* self, uint32_t index, void** description);
  /// The name of the member and then the names of its arguments.
  HyResult (*GetNames)(HyTypeInfo* self, int32_t member, HyString* names, uint32_t room, uint32_t* count);
  HyResult (*GetRefTypeOfImplType)(HyTypeInfo* self, uint32_t index, uint32_t* reference);
  HyResult (*GetImplTypeFlags)(HyTypeInfo* self, uint32_t index, int32_t* flags);
  HyResult (*GetIDsOfNames)(HyTypeInfo* self, uint16_t** names, uint32_t count, int32_t* ids);
  HyResult (*Invoke)(HyTypeInfo* self, void* instance, int32_t member, uint16_t flags, HyDispParams* params,
                     HyVariant* result, HyExcepInfo* exception, uint32_t* argumentInError);
  /// Describes a member, or with HY_DISPID_UNKNOWN the type itself. Each pointer may be null.
  HyResult (*GetDocumentation)(HyTypeInfo* self, int32_t member, HyString* name, HyString* text,
                               uint32_t* helpContext, HyString* helpFile);
  HyResult (*GetDllEntry)(HyTypeInfo* self, int32_t member, int32_t invkind, HyString* dll, HyString* name,
                          uint16_t* ordinal);
  HyResult (*GetRefTypeInfo)(HyTypeInfo* self, uint32_t reference, HyTypeInfo** typeInfo);
  HyResult (*AddressOfMember)(HyTypeInfo* self, int32_t member, int32_t invkind, void** address);
  HyResult (*CreateInstance)(HyTypeInfo* self, HyUnknown* outer, const HyGuid* interfaceId, void** object);
  HyResult (*GetMops)(HyTypeInfo* self, int32_t member, HyString* mops);
  HyResult (*GetContainingTypeLib)(HyTypeInfo* self, void** library, uint32_t* index);
  void (*ReleaseTypeAttr)(HyTypeInfo* self, HyTypeAttr* attributes);
  void (*ReleaseFuncDesc)(HyTypeInfo* self, HyFuncDesc* description);
  void (*ReleaseVarDesc)(HyTypeInfo* self, void* description);
} HyTypeInfoVtable;
struct HyTypeInfo {
  const HyTypeInfoVtable* lpVtbl;
};

/// Gives the factory of a class; HY_CLASS_E_CLASSNOTAVAILABLE for a class that is not of this library.
HY_COMPONENT_API HyResult DllGetClassObject(const HyGuid* classId, const HyGuid* interfaceId, void** object);
/// HY_S_OK when no object and no lock is left, else HY_S_FALSE.
HY_COMPONENT_API HyResult DllCanUnloadNow(void);
/// Writes the classes and their names into the settings store of the calling thread's world.
HY_COMPONENT_API HyResult DllRegisterServer(void);
/// Removes what DllRegisterServer wrote.
HY_COMPONENT_API HyResult DllUnregisterServer(void);

// NOLINTBEGIN(modernize-use-nullptr)
/// A string of `length` units, copied from `text` unless that is null. Null when memory ran out.
static inline HyString hyStringAllocate(const uint16_t* text, uint32_t length) {
  const uint32_t bytes = length * (uint32_t)sizeof(uint16_t);
  if (length > 0x7FFFFFFAU / sizeof(uint16_t)) return NULL;
  uint8_t* block = (uint8_t*)malloc((size_t)bytes + sizeof(uint32_t) + sizeof(uint16_t));
  if (block == NULL) return NULL;
  memcpy(block, &bytes, sizeof bytes);
  if (text != NULL && bytes > 0)
    memcpy(block + sizeof bytes, text, bytes);
  else
    memset(block + sizeof bytes, 0, bytes);
  memset(block + sizeof bytes + bytes, 0, sizeof(uint16_t));
  return (HyString)(void*)(block + sizeof bytes);
}

/// In units of two bytes.
static inline uint32_t hyStringLength(const uint16_t* string) {
  uint32_t bytes = 0;
  if (string != NULL) memcpy(&bytes, (const uint8_t*)string - sizeof bytes, sizeof bytes);
  return bytes / (uint32_t)sizeof(uint16_t);
}

static inline void hyStringFree(HyString string) {
  if (string != NULL) free((uint8_t*)string - sizeof(uint32_t));
}

static inline HyResult hyVariantClear(HyVariant* variant);

/// Frees an array and what its elements hold.
static inline void hyArrayDestroy(HyArray* array) {
  if (array == NULL) return;
  size_t count = array->cDims > 0 ? 1 : 0;
  for (uint16_t i = 0; i < array->cDims; ++i) count *= array->rgsabound[i].cElements;
  for (size_t i = 0; i < count; ++i) {
    void* element = (uint8_t*)array->pvData + i * array->cbElements;
    if (array->fFeatures & HY_FADF_VARIANT) hyVariantClear((HyVariant*)element);
    if (array->fFeatures & HY_FADF_BSTR) hyStringFree(*(HyString*)element);
    if (array->fFeatures & (HY_FADF_UNKNOWN | HY_FADF_DISPATCH)) {
      HyUnknown* object = *(HyUnknown**)element;
      if (object != NULL) object->lpVtbl->Release(object);
    }
  }
  free(array->pvData);
  free(array);
}

/// Frees what the variant owns and makes it empty; what a HY_VT_BYREF variant points to is not its own.
static inline HyResult hyVariantClear(HyVariant* variant) {
  if (variant == NULL) return HY_E_POINTER;
  if (!(variant->vt & HY_VT_BYREF)) {
    if (variant->vt & HY_VT_ARRAY) {
      hyArrayDestroy(variant->parray);
    } else if (variant->vt == HY_VT_BSTR) {
      hyStringFree(variant->bstrVal);
    } else if (variant->vt == HY_VT_DISPATCH || variant->vt == HY_VT_UNKNOWN) {
      if (variant->punkVal != NULL) variant->punkVal->lpVtbl->Release(variant->punkVal);
    }
  }
  memset(variant, 0, sizeof *variant);
  return HY_S_OK;
}
// NOLINTEND(modernize-use-nullptr)

#if defined(__cplusplus)
}
#endif

#endif
