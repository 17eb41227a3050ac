# The software bill of materials, in the form of SPDX 2.3: what the outputs contain or need, with versions. To be included
# where CLI11 and nlohmann_json were found.
# The time is that of the last commit, unless SOURCE_DATE_EPOCH says another, so that equal sources give equal files.
set(given_time $ENV{SOURCE_DATE_EPOCH})
if(NOT given_time)
    execute_process(COMMAND git -c safe.directory=* log -1 --format=%ct WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
                    OUTPUT_VARIABLE commit_time OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    set(ENV{SOURCE_DATE_EPOCH} ${commit_time})
endif()
string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)
set(ENV{SOURCE_DATE_EPOCH} ${given_time})

set(sbom_packages)
set(sbom_relations)
# sbom_add(NAME VERSION PURPOSE RELATION LICENSE): RELATION is that of harbor to it.
function(sbom_add name version purpose relation license)
    string(MAKE_C_IDENTIFIER "${name}" id)
    string(REPLACE "_" "-" id "${id}")
    string(APPEND sbom_packages ",
    {\"SPDXID\": \"SPDXRef-${id}\", \"name\": \"${name}\", \"versionInfo\": \"${version}\", \"primaryPackagePurpose\": \"${purpose}\",
     \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false, \"licenseConcluded\": \"${license}\",
     \"licenseDeclared\": \"${license}\", \"copyrightText\": \"NOASSERTION\"}")
    string(APPEND sbom_relations ",
    {\"spdxElementId\": \"SPDXRef-harbor\", \"relationshipType\": \"${relation}\", \"relatedSpdxElement\": \"SPDXRef-${id}\"}")
    set(sbom_packages "${sbom_packages}" PARENT_SCOPE)
    set(sbom_relations "${sbom_relations}" PARENT_SCOPE)
endfunction()
sbom_add(libharbor6.so ${PROJECT_VERSION} LIBRARY CONTAINS NOASSERTION)
foreach(format IN LISTS formats)
    sbom_add(${format}.so ${PROJECT_VERSION} LIBRARY CONTAINS NOASSERTION)
endforeach()
sbom_add(CLI11 ${CLI11_VERSION} LIBRARY STATIC_LINK BSD-3-Clause)
sbom_add(nlohmann_json ${nlohmann_json_VERSION} LIBRARY STATIC_LINK MIT)
sbom_add("C++ standard library of ${CMAKE_CXX_COMPILER_ID}" ${CMAKE_CXX_COMPILER_VERSION} LIBRARY DYNAMIC_LINK NOASSERTION)
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/harbor.spdx.json @ONLY CONTENT [[{
  "spdxVersion": "SPDX-2.3", "dataLicense": "CC0-1.0", "SPDXID": "SPDXRef-DOCUMENT", "name": "harbor-@PROJECT_VERSION@",
  "documentNamespace": "https://spdx.org/spdxdocs/harbor-@PROJECT_VERSION@-@created@",
  "creationInfo": {"created": "@created@", "creators": ["Tool: CMake-@CMAKE_VERSION@"]},
  "packages": [
    {"SPDXID": "SPDXRef-harbor", "name": "harbor", "versionInfo": "@PROJECT_VERSION@", "primaryPackagePurpose": "APPLICATION",
     "downloadLocation": "NOASSERTION", "filesAnalyzed": false, "licenseConcluded": "NOASSERTION",
     "licenseDeclared": "NOASSERTION", "copyrightText": "NOASSERTION"}@sbom_packages@
  ],
  "relationships": [
    {"spdxElementId": "SPDXRef-DOCUMENT", "relationshipType": "DESCRIBES", "relatedSpdxElement": "SPDXRef-harbor"}@sbom_relations@
  ]
}
]])
install(FILES ${PROJECT_BINARY_DIR}/harbor.spdx.json DESTINATION share/doc/harbor COMPONENT program)
