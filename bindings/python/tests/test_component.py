"""The component, call by call."""

import ctypes
import threading
import unittest
from typing import Any, List

from hy_wristlog import HyWristlogError, Main, Pendrel, Subject, VardenLogger, _library
from hy_wristlog import _component as component
from hy_wristlog._component import METHOD, PROPERTYGET, PROPERTYPUT, Dispatch, Interface, reference_to
from hy_wristlog._sinks import listen
from hy_wristlog._values import (
    VT_BOOL,
    VT_BSTR,
    VT_BYREF,
    VT_DISPATCH,
    VT_EMPTY,
    VT_I2,
    VT_I4,
    VT_NULL,
    VT_R4,
    VT_R8,
    VT_VARIANT,
    Given,
    Guid,
    Variant,
    release,
    taken,
    text_at,
)
from support import KESTRIN2, VIVID, BenchCase, Pointer, Result, can_unload, comes_true, same

STRANGER = Guid("01234567-89ab-cdef-0123-456789abcdef")
IID_PROVIDE_CLASS_INFO = Guid("b196b283-bab4-101a-b69c-00aa00341d07")
CLASSES = (
    component.CLSID_MAIN,
    component.CLSID_VARDEN_LOGGER,
    component.CLSID_PENDREL,
    component.CLSID_SUBJECT,
)


def raw_invoke(dispatch: Dispatch, member: int, kinds: int, params: Any, **others: Any) -> int:
    call = dispatch.method(6, component._INVOKE)
    result: int = call(
        dispatch.address,
        member,
        others.get("reserved", Guid()),
        0,
        kinds,
        params,
        others.get("answer"),
        others.get("exception"),
        others.get("at_fault"),
    )
    return result


def variant(kind: int, **content: Any) -> Variant:
    made = Variant()
    made.vt = kind
    for name, value in content.items():
        setattr(made, name, value)
    return made


class Exports(unittest.TestCase):
    def get(self, class_id: Any, interface: Any, room: Any) -> int:
        function = _library.component().DllGetClassObject
        function.restype = Result
        given = (None if one is None else ctypes.byref(one) for one in (class_id, interface, room))
        result: int = function(*given)
        return result

    def test_factories(self) -> None:
        self.assertTrue(can_unload())
        factory_id = component.IID_CLASS_FACTORY
        for class_id, interface, room, expected in (
            (STRANGER, factory_id, Pointer(5), 0x80040111),
            (component.CLSID_MAIN, STRANGER, Pointer(5), component.E_NOINTERFACE),
            (None, factory_id, Pointer(5), component.E_POINTER),
            (component.CLSID_MAIN, None, Pointer(5), component.E_POINTER),
            (component.CLSID_MAIN, factory_id, None, component.E_POINTER),
        ):
            self.assertEqual(self.get(class_id, interface, room), expected)
            self.assertIsNone(room.value if room else None, "nothing is handed out")
        for class_id in CLASSES:
            found, made = Pointer(), Pointer()
            self.assertEqual(self.get(class_id, factory_id, found), 0)
            factory = Interface(found.value or 0)
            create = factory.method(3, component._CREATE)
            self.assertEqual(create(factory.address, factory.address, component.IID_UNKNOWN, made), 0x80040110)
            self.assertEqual(create(factory.address, None, STRANGER, made), component.E_NOINTERFACE)
            self.assertEqual(create(factory.address, None, component.IID_UNKNOWN, None), component.E_POINTER)
            lock = factory.method(4, ctypes.CFUNCTYPE(Result, Pointer, ctypes.c_int32))
            self.assertEqual(lock(factory.address, 1), 0)
            factory.close()
            self.assertFalse(can_unload(), "locked")
            self.get(class_id, factory_id, found)
            factory = Interface(found.value or 0)
            factory.method(4, ctypes.CFUNCTYPE(Result, Pointer, ctypes.c_int32))(factory.address, 0)
            factory.close()
            self.assertTrue(can_unload())


class Interfaces(BenchCase):
    def test_query_interface(self) -> None:
        containers = (component.CLSID_MAIN, component.CLSID_VARDEN_LOGGER, component.CLSID_PENDREL)
        for class_id in CLASSES:
            with self.subTest(bytes(class_id).hex()):
                made = component.create(class_id)
                identity = made.query(component.IID_UNKNOWN)
                wanted: List[Guid] = [component.IID_DISPATCH, IID_PROVIDE_CLASS_INFO]
                if any(same(class_id, one) for one in containers):
                    wanted.append(component.IID_CONNECTION_POINT_CONTAINER)
                for interface in wanted:
                    facet = Interface(made.query(interface))
                    again = Interface(facet.query(component.IID_UNKNOWN))
                    self.assertEqual(again.address, identity, "one identity, whichever way it is asked for")
                    back = Interface(facet.query(component.IID_DISPATCH))
                    self.assertEqual(back.address, made.address)
                with self.assertRaises(component.ComponentError) as refused:
                    made.query(STRANGER)
                self.assertEqual(refused.exception.result, component.E_NOINTERFACE)
                query = made.method(0, component._QUERY)
                room = Pointer(7)
                self.assertEqual(query(made.address, None, room), component.E_POINTER)
                self.assertIsNone(room.value)
                self.assertEqual(query(made.address, component.IID_UNKNOWN, None), component.E_POINTER)
                Interface(identity)

    def test_a_released_object_is_disconnected(self) -> None:
        made = component.create(component.CLSID_SUBJECT)
        call = made.method(0, component._QUERY)
        add = made.method(1, ctypes.CFUNCTYPE(ctypes.c_uint32, Pointer))
        address = made.address
        self.assertEqual(add(address), 2)
        made.close()
        self.assertEqual(call(address, component.IID_UNKNOWN, Pointer()), 0)
        self.assertEqual([release(address), release(address)], [1, 0])
        self.assertEqual(call(address, component.IID_UNKNOWN, Pointer()), component.RPC_E_DISCONNECTED)

    def test_names_have_numbers(self) -> None:
        main = component.create(component.CLSID_MAIN)
        found = main.numbers("Configure", "LoggerType", "EPOCHLENGTH", "deviceserialnumber")
        self.assertEqual(found[1:], [0, 2, 12])
        self.assertEqual(main.numbers("getstatus"), main.numbers("GetStatus"))
        for names in (("Nothing",), ("Configure", "Nothing"), ("",), ("Versionn",)):
            with self.assertRaises(AttributeError, msg=names):
                main.numbers(*names)
        ids = ctypes.c_int32()
        call = main.method(5, component._NAMES)
        self.assertEqual(call(main.address, Guid(), None, 1, 0, ids), component.E_POINTER)
        self.assertEqual(call(main.address, Guid(), (Pointer * 1)(), 1, 0, ids), component.E_POINTER)


class Invoke(BenchCase):
    def setUp(self) -> None:
        super().setUp()
        self.main = component.create(component.CLSID_MAIN)
        self.addCleanup(self.main.close)
        self.version = self.main.number("Version")
        self.retries = self.main.number("MaxCommunicationRetries")

    def test_refusals(self) -> None:
        params = component.DispParams()
        answer = variant(VT_I4, lVal=9)
        exception, at_fault = component.ExcepInfo(), ctypes.c_uint32(77)
        for member, kinds, given, others, expected in (
            (self.version, PROPERTYGET, params, {"answer": answer}, 0),
            (self.version, PROPERTYGET | METHOD, params, {}, 0),
            (self.version, PROPERTYGET, None, {}, component.E_POINTER),
            (self.version, PROPERTYGET, params, {"reserved": STRANGER}, 0x80020001),
            (self.version, PROPERTYPUT, params, {}, component.DISP_E_MEMBERNOTFOUND),
            (self.version, METHOD, params, {}, component.DISP_E_MEMBERNOTFOUND),
            (self.version, 0, params, {}, component.E_INVALIDARG),
            (self.version, 0x40, params, {}, component.E_INVALIDARG),
            (0, METHOD, params, {}, component.DISP_E_MEMBERNOTFOUND),
            (-3, METHOD, params, {}, component.DISP_E_MEMBERNOTFOUND),
            (9999, METHOD, params, {}, component.DISP_E_MEMBERNOTFOUND),
        ):
            with self.subTest(member=member, kinds=kinds):
                others.update(exception=exception, at_fault=at_fault)
                result = raw_invoke(self.main, member, kinds, given, **others)
                self.assertEqual(result, expected)
                self.assertEqual(at_fault.value, 77, "no argument is to blame")
                self.assertEqual((exception.scode, exception.bstrSource), (0, None))
        self.assertRegex(taken(answer), r"^\d+\.\d+\.\d+$")

    def put(self, *values: Variant, named: Any = (-3,)) -> int:
        arguments = (Variant * len(values))(*values)
        names = (ctypes.c_int32 * len(named))(*named)
        params = component.DispParams(arguments, names, len(values), len(named))
        return raw_invoke(self.main, self.retries, PROPERTYPUT, params)

    def test_values_are_converted_to_the_property(self) -> None:
        given = Given()

        def text(words: str) -> Variant:
            made = Variant()
            given.set(made, words)
            return made

        nested = variant(VT_I4, lVal=12)
        for value, expected in (
            (variant(VT_I4, lVal=7), 7),
            (variant(VT_I2, iVal=-3), -3),
            (variant(VT_R8, dblVal=2.5), 2),
            (variant(VT_R8, dblVal=3.5), 4),
            (variant(VT_R4, fltVal=-0.5), 0),
            (variant(VT_BOOL, boolVal=-1), -1),
            (variant(VT_EMPTY), 0),
            (text("41"), 41),
            (reference_to(nested), 12),
            (reference_to(nested, VT_I4), 12),
        ):
            self.assertEqual(self.put(value), 0)
            self.assertEqual(taken(self.main.get("MaxCommunicationRetries")), expected)
        for value, expected in (
            (variant(VT_I4, lVal=32768), component.DISP_E_OVERFLOW),
            (variant(VT_R8, dblVal=float("nan")), component.DISP_E_OVERFLOW),
            (text("99999"), component.DISP_E_OVERFLOW),
            (text("five"), component.DISP_E_TYPEMISMATCH),
            (variant(VT_NULL), component.DISP_E_TYPEMISMATCH),
            (variant(VT_DISPATCH), component.DISP_E_TYPEMISMATCH),
            (variant(VT_BYREF | VT_I4), component.E_POINTER),
            (variant(99), component.DISP_E_BADVARTYPE),
        ):
            self.assertEqual(self.put(value), expected, value.vt)
        self.assertEqual(self.put(named=()), component.DISP_E_BADPARAMCOUNT)
        self.assertEqual(self.put(nested, nested), component.DISP_E_BADPARAMCOUNT)
        self.assertEqual(self.put(nested, named=()), component.DISP_E_PARAMNOTFOUND)
        self.assertEqual(self.put(nested, named=(-1,)), component.DISP_E_PARAMNOTFOUND)
        self.assertEqual(taken(self.main.get("MaxCommunicationRetries")), 12, "what is refused changes nothing")

    def configure(self, values: Any, named: Any = ()) -> int:
        answer: int = taken(self.main.invoke("Configure", METHOD, values, named))
        return answer

    def test_arguments_by_place_and_by_name(self) -> None:
        subject = self.subject()._dispatch
        # An epoch of 77 seconds is refused before any logger is looked for.
        self.assertEqual(self.configure((KESTRIN2, 1, 77, subject)), 10006)
        self.assertEqual(self.configure((), [(2, 77), (3, subject), (0, KESTRIN2), (1, 1)]), 10006)
        self.assertEqual(self.configure((KESTRIN2, 1), [(3, subject), (2, 77)]), 10006)
        self.assertEqual(self.configure((VIVID, 1, 60, subject, None, None, None, None, None, 9)), 10021)
        self.assertEqual(self.configure((VIVID, 1, 60, subject), [(9, 1), (10, 9)]), 10022)
        for values, named, kind, words in (
            ((VIVID, 1, 60), (), TypeError, "number of arguments"),
            ((VIVID, 1, 60, None), (), TypeError, "argument 4"),
            ((VIVID, "one", 60, subject), (), TypeError, "argument 2"),
            ((VIVID, 1, 2**31, subject), (), ValueError, "argument 3"),
            ((VIVID, 1, 60, self.main), (), TypeError, "argument 4"),
            ((VIVID, 1, 60, subject), [(3, subject)], Exception, "0x80070057"),
            ((VIVID, 1, 60, subject), [(13, 0)], TypeError, "no such argument"),
            ((VIVID, 1, 60), [(4, "EST")], TypeError, "missing"),
            ((VIVID,) * 14, (), TypeError, "number of arguments"),
        ):
            with self.subTest(words), self.assertRaisesRegex(kind, words):
                self.configure(values, named)

    def test_results_come_by_reference(self) -> None:
        # What the variables held before is freed, of whatever type it was.
        simple, words = variant(VT_BSTR), variant(VT_I4, lVal=5)
        logger, subject = Variant(), variant(VT_DISPATCH)
        self.main.get("Version")  # something to free
        before = self.main.get("Version")
        simple.pointer = before.pointer
        days = variant(VT_R8, dblVal=-5)
        values = (
            VIVID,
            reference_to(simple, VT_BSTR),
            reference_to(words),
            reference_to(logger),
            reference_to(subject, VT_DISPATCH),
            reference_to(days, VT_R8),
        )
        self.assertEqual(taken(self.main.call("GetStatus", *values)), 0)
        self.assertEqual(words.vt, VT_BSTR)
        self.assertTrue(text_at(simple.pointer))
        self.assertEqual((logger.vt, subject.vt), (VT_DISPATCH, VT_DISPATCH))
        self.assertGreater(days.dblVal, 300)
        for one in (simple, words, logger, subject):
            one.clear()
        # By value there is nowhere to put a result; a variable of another type is refused.
        self.assertEqual(taken(self.main.call("GetStatus", VIVID, "", "", Variant(), Variant())), 0)
        wrong = variant(VT_I4)
        with self.assertRaisesRegex(TypeError, "argument 2"):
            self.main.call("GetStatus", VIVID, reference_to(wrong, VT_I4), *values[2:])

    def test_failures_are_told_in_full(self) -> None:
        logger = VardenLogger()
        with self.assertRaises(HyWristlogError) as caught:
            logger.BatteryPercent
        self.assertEqual(caught.exception.number, 11502)
        self.assertIn("BatteryPercent", caught.exception.source)
        self.assertTrue(caught.exception.description)
        self.assertIn("11502", str(caught.exception))

    def test_text_is_utf_16(self) -> None:
        with Subject() as subject:
            for words, expected in (
                ("", ""),
                ("a\0b", "a\0b"),
                ("Zoë €", "Zoë €"),
                ("😀", "😀"),
                ("\ud800x", "\ufffdx"),
                ("x" * 70000, "x" * 70000),
            ):
                subject.Identity = words
                self.assertEqual(subject.Identity, expected)


class Hearer:
    def __init__(self) -> None:
        self.heard: List[Any] = []

    def hear(self, events: Guid, event: int, values: List[Any]) -> None:
        self.heard.append((event, values))


class Threads(BenchCase):
    def elsewhere(self, action: Any) -> Any:
        outcome: List[Any] = []

        def run() -> None:
            try:
                outcome.append(action())
            except Exception as raised:
                outcome.append(raised)

        thread = threading.Thread(target=run)
        thread.start()
        thread.join()
        return outcome[0]

    def test_an_object_belongs_to_its_thread(self) -> None:
        main = Main()
        for use in (lambda: main.Version, lambda: main.GetStatus(VIVID), main.AbortComms):
            raised = self.elsewhere(use)
            self.assertIsInstance(raised, RuntimeError)
            self.assertEqual(raised.result, component.RPC_E_WRONG_THREAD)
            self.assertIn("thread", str(raised))
        self.assertTrue(main.Version)
        # A reference may be given back anywhere; the object ends at its owner's next call.
        self.elsewhere(main.close)
        Subject().close()
        self.assertTrue(can_unload())

    def test_an_object_ends_with_its_thread(self) -> None:
        subject = self.elsewhere(Subject)
        with self.assertRaises(component.ComponentError) as refused:
            subject.Identity
        self.assertIn(refused.exception.result, (component.RPC_E_DISCONNECTED, component.RPC_E_WRONG_THREAD))
        subject.close()

    def test_sinks_live_as_long_as_their_source(self) -> None:
        from hy_wristlog._sinks import _living

        before = len(_living)
        for make, events in (
            (Main, component.DIID_VARDEN_LOGGER_EVENTS),
            (Main, component.DIID_HOST_EVENTS),
            (VardenLogger, component.DIID_VARDEN_LOGGER_EVENTS),
            (Pendrel, component.DIID_PENDREL_EVENTS),
        ):
            with make() as source:
                connection, other = (listen(source._dispatch, events, Hearer()) for _ in range(2))
                self.assertNotIn(0, {connection.cookie, other.cookie})
                self.assertEqual(len(_living), before + 2)
                connection.disconnect()
                self.assertEqual(len(_living), before + 1)
                other.close()
            self.assertEqual(len(_living), before)
        with Pendrel() as source, self.assertRaises(component.ComponentError):
            listen(source._dispatch, component.DIID_HOST_EVENTS, Hearer())
        # One that a thread leaves behind, too.
        def leave() -> VardenLogger:
            logger = VardenLogger()
            listen(logger._dispatch, component.DIID_VARDEN_LOGGER_EVENTS, Hearer()).close()
            return logger

        left = self.elsewhere(leave)
        self.assertTrue(comes_true(lambda: len(_living) == before))
        left.close()


if __name__ == "__main__":
    unittest.main()
