"""Python with pywin32 (pip install pywin32).

Dispatch binds by name. A text or a handle that a method fills in is passed as a VARIANT of the
by-reference type, whose value is read afterwards.
"""
import pythoncom
from win32com.client import VARIANT, dynamic

depots = dynamic.Dispatch("DepotIntr.DepotIntrApi")
session = depots.DPInitialize()
try:
    depots.Quiet(session, True)
    handle = VARIANT(pythoncom.VT_BYREF | pythoncom.VT_I4, session)
    depots.DPLoadFile(handle, r"<Work>\Sessions\office.kre")
    value = VARIANT(pythoncom.VT_BYREF | pythoncom.VT_BSTR, "")
    depots.DPGetProfileString(session, "Host", "Name", "(not set)", value, 260)
    print("Host:", value.value)

    for path in depots.Find(session, r"<Work>\Sessions", ".kre"):
        print(path)
    if not depots.Copy(session, r"<Work>\Sessions\office.kre", r"<Work>\copy.kre", True):
        print("Failed with", depots.LastErrorCode(session), depots.LastErrorText(session))
finally:
    depots.DPUnInitialize(session)
