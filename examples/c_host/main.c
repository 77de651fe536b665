/* Uses the library as a component from C: makes a Class_Main, lists its members, asks for its version and for
 * the state of the logger in a Kestrin Vivid's dock. Build: cc main.c $(pkg-config --cflags --libs hy_wristlog) */
#include <hy_wristlog/component.h>
#include <stdio.h>

/* Only for ASCII. */
static void print(const uint16_t* text) {
  for (uint32_t i = 0; i < hyStringLength(text); ++i) putchar(text[i] < 128 ? text[i] : '?');
}

static HyString textOf(const char* ascii) {
  HyString text = hyStringAllocate(NULL, (uint32_t)strlen(ascii));
  for (size_t i = 0; text != NULL && ascii[i] != '\0'; ++i) text[i] = (uint16_t)ascii[i];
  return text;
}

/* Calls or reads the member; arguments stand last first. */
static HyResult invoke(HyDispatch* object, const char* member, uint16_t flags, HyVariant* arguments,
                       uint32_t count, HyVariant* result) {
  HyString name = textOf(member);
  int32_t id = HY_DISPID_UNKNOWN;
  HyResult answer = object->lpVtbl->GetIDsOfNames(object, &HY_GUID_NULL, &name, 1, 0, &id);
  hyStringFree(name);
  if (answer != HY_S_OK) return answer;
  HyDispParams params = {arguments, NULL, count, 0};
  HyExcepInfo failure;
  memset(&failure, 0, sizeof failure);
  answer = object->lpVtbl->Invoke(object, id, &HY_GUID_NULL, 0, flags, &params, result, &failure, NULL);
  if (answer == HY_DISP_E_EXCEPTION) {
    print(failure.bstrSource);
    printf(": ");
    print(failure.bstrDescription);
    printf(" (%d)\n", (int)(failure.scode - HY_FAILURE_BASE));
  }
  hyStringFree(failure.bstrSource);
  hyStringFree(failure.bstrDescription);
  hyStringFree(failure.bstrHelpFile);
  return answer;
}

static void listMembers(HyDispatch* object) {
  HyTypeInfo* info = NULL;
  if (object->lpVtbl->GetTypeInfo(object, 0, 0, &info) != HY_S_OK) return;
  HyFuncDesc* description = NULL;
  for (uint32_t i = 0; info->lpVtbl->GetFuncDesc(info, i, &description) == HY_S_OK; ++i) {
    HyString name = NULL;
    uint32_t names = 0;
    if (info->lpVtbl->GetNames(info, description->memid, &name, 1, &names) == HY_S_OK) {
      printf("  %s ", description->invkind == HY_DISPATCH_METHOD        ? "call"
                      : description->invkind == HY_DISPATCH_PROPERTYGET ? "get "
                                                                        : "let ");
      print(name);
      printf(" (%d arguments)\n", description->cParams);
      hyStringFree(name);
    }
    info->lpVtbl->ReleaseFuncDesc(info, description);
  }
  info->lpVtbl->Release(info);
}

static HyResult showStatus(HyDispatch* object) {
  HyString simple = NULL;
  HyString words = NULL;
  HyDispatch* logger = NULL;
  HyDispatch* subject = NULL;
  HyVariant arguments[5];
  memset(arguments, 0, sizeof arguments);
  arguments[4].vt = HY_VT_I4; /* LoggerType: a Kestrin Vivid */
  arguments[4].lVal = 0;
  arguments[3].vt = HY_VT_BYREF | HY_VT_BSTR;
  arguments[3].pbstrVal = &simple;
  arguments[2].vt = HY_VT_BYREF | HY_VT_BSTR;
  arguments[2].pbstrVal = &words;
  arguments[1].vt = HY_VT_BYREF | HY_VT_DISPATCH;
  arguments[1].ppdispVal = &logger;
  arguments[0].vt = HY_VT_BYREF | HY_VT_DISPATCH;
  arguments[0].ppdispVal = &subject;
  HyVariant code;
  memset(&code, 0, sizeof code);
  const HyResult answer = invoke(object, "GetStatus", HY_DISPATCH_METHOD, arguments, 5, &code);
  if (answer == HY_S_OK) {
    printf("Code %d: ", (int)code.lVal);
    print(simple);
    printf("\n");
    print(words);
    printf("\n");
  }
  hyStringFree(simple);
  hyStringFree(words);
  if (logger != NULL) logger->lpVtbl->Release(logger);
  if (subject != NULL) subject->lpVtbl->Release(subject);
  return answer;
}

int main(void) {
  HyClassFactory* factory = NULL;
  HyDispatch* object = NULL;
  if (DllGetClassObject(&HY_CLSID_MAIN, &HY_IID_CLASS_FACTORY, (void**)&factory) != HY_S_OK) return 1;
  const HyResult made = factory->lpVtbl->CreateInstance(factory, NULL, &HY_IID_DISPATCH, (void**)&object);
  factory->lpVtbl->Release(factory);
  if (made != HY_S_OK) return 1;

  HyVariant version;
  memset(&version, 0, sizeof version);
  HyResult answer = invoke(object, "Version", HY_DISPATCH_PROPERTYGET, NULL, 0, &version);
  if (answer == HY_S_OK) {
    printf("HY_Wristlog ");
    print(version.bstrVal);
    printf("\n");
  }
  hyVariantClear(&version);
  listMembers(object);
  if (answer == HY_S_OK) answer = showStatus(object);
  object->lpVtbl->Release(object);
  return answer == HY_S_OK && DllCanUnloadNow() == HY_S_OK ? 0 : 1;
}
