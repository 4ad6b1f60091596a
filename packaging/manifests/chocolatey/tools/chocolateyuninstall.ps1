$ErrorActionPreference = 'Stop'
foreach ($entry in Get-UninstallRegistryKey -SoftwareName 'quill') {
    $program = ($entry.UninstallString -replace '"', '')
    Uninstall-ChocolateyPackage -PackageName 'quill' -FileType 'exe' -SilentArgs '/S' `
        -File $program -ValidExitCodes @(0)
}
