# PowerShell binds by name, so that nothing has to be imported. [ref] passes a variable that a
# method fills in: the text of DPGetProfileString, and the handle of DPLoadFile and DPFindInit.
$depots = New-Object -ComObject DepotIntr.DepotIntrApi
$session = $depots.DPInitialize()
try {
    [void]$depots.Quiet($session, $true)
    [void]$depots.DPLoadFile([ref]$session, '<Work>\Sessions\office.kre')
    $value = ''
    [void]$depots.DPGetProfileString($session, 'Host', 'Name', '(not set)', [ref]$value, 260)
    "Host: $value"

    foreach ($path in $depots.Find($session, '<Work>\Sessions', '.kre')) { $path }
    if (-not $depots.Copy($session, '<Work>\Sessions\office.kre', '<Work>\copy.kre', $true)) {
        "Failed with $($depots.LastErrorCode($session)): $($depots.LastErrorText($session))"
    }
}
finally {
    [void]$depots.DPUnInitialize($session)
}
