"""Python with comtypes (pip install comtypes).

dynamic=True binds by name. Without it comtypes takes the type library's word that a handle has 32
bits, and DPInitialize writes 64. A text or a handle that a method fills in is passed as a VARIANT by
reference.
"""
from ctypes import byref

from comtypes.automation import VARIANT
from comtypes.client import CreateObject

depots = CreateObject("DepotIntr.DepotIntrApi", dynamic=True)
session = depots.DPInitialize()
try:
    depots.Quiet(session, True)
    depots.DPLoadFile(byref(VARIANT(session)), r"<Work>\Sessions\office.kre")
    value = VARIANT("")
    depots.DPGetProfileString(session, "Host", "Name", "(not set)", byref(value), 260)
    print("Host:", value.value)

    for path in depots.Find(session, r"<Work>\Sessions", ".kre"):
        print(path)
    if not depots.Copy(session, r"<Work>\Sessions\office.kre", r"<Work>\copy.kre", True):
        print("Failed with", depots.LastErrorCode(session), depots.LastErrorText(session))
finally:
    depots.DPUnInitialize(session)
