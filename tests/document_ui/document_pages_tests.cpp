// The printing preferences as a person uses them: the host shows the document sheet of a
// real printer with the plug-in object linked into this program (so that the test
// spooler can stand in where Wine's cannot), a person clicks, chooses and applies, and
// the tests read what reached the device modes, the printer data and the printer.
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <tuple>

#include "config/config_fixtures.h"
#include "document_ui/preferences_fixture.h"
#include "resources/document_dialog_ids.h"

using namespace ozdkhost;
using docui::Preferences;

// The frame answers every reason; the sheet opens on "Layout" with the three pages,
// titled through the locale library when there is one, and reports the Quorl page.
TEST(DocumentPropertySheets, OpensOnLayoutWithThreeTitledPagesAndAnswersEveryReason) {
    Preferences plain;
    ASSERT_TRUE(plain.Open()) << testenv::Narrow(plain.log.Text());
    EXPECT_EQ(plain.sheet->TabTitles(), (std::vector<std::wstring>{L"Layout", L"Paper/Media", L"Quorl"}));
    EXPECT_EQ(Text(plain.sheet->CurrentPage(), IDC_SINGLE_SIDED), L"&Single Sided") << "Layout in front";
    const CallRecord* init = plain.sheet->FindCall(L"DocumentPropertySheets(PROPSHEETUI_REASON_INIT)");
    ASSERT_NE(init, nullptr);
    ASSERT_EQ(plain.sheet->pluginPages().size(), 3u);
    EXPECT_EQ(init->sheetResult, reinterpret_cast<ULONG_PTR>(plain.sheet->pluginPages()[2]));

    PROPSHEETUI_INFO info = {sizeof(info), PROPSHEETUI_INFO_VERSION};
    SETRESULT_INFO result = {};
    result.Result = 0x1234;
    for (const auto& [reason, lParam, expected] : {std::tuple<WORD, LPARAM, ULONG_PTR>{7, 0, 0},
                                                   {PROPSHEETUI_REASON_SET_RESULT, LPARAM(&result), 0x1234}}) {
        info.Reason = reason;
        info.Result = 99;
        EXPECT_EQ(plain.object.get()->DocumentPropertySheets(&info, lParam), S_OK);
        EXPECT_EQ(info.Result, expected) << "reason " << reason;
    }
    info.Version = 0x200;
    SetLastError(0);
    EXPECT_EQ(plain.object.get()->DocumentPropertySheets(&info, 0), E_FAIL);
    EXPECT_EQ(GetLastError(), 87u);
    plain.sheet.reset();

    configtest::PlacedFile library(configtest::StandIn(L"locale_library\\ozdkrnlcl.dll"),
                                   configtest::LocaleLibraryPath());
    configtest::MakerFolder maker;
    Preferences translated;
    ASSERT_TRUE(translated.Open());
    EXPECT_EQ(translated.sheet->TabTitles(), (std::vector<std::wstring>{L"Seite", L"Papier/Medien", L"Quorl"}))
        << "a caption the locale lacks gives no title: the sheet shows the template's";
}

// Landscape, interpoint open to top with the empty page reach both device modes and
// "Config"; single sided keeps the interpoint options' states and still writes them;
// values already set and a second apply write nothing.
TEST(LayoutPage, AppliedChoicesReachBothDeviceModesAndConfigAndUnchangedOnesWriteNothing) {
    Preferences p;
    ASSERT_TRUE(p.Open());
    HWND layout = p.sheet->CurrentPage();
    ASSERT_TRUE(Checked(layout, IDC_PORTRAIT) && Checked(layout, IDC_SINGLE_SIDED) && !Enabled(layout, IDC_OPEN_TO_TOP));
    SendDlgItemMessageW(layout, IDC_LANDSCAPE, BM_CLICK, 0, 0);  // the orientation group is hidden
    for (int id : {IDC_DOUBLE_SIDED, IDC_OPEN_TO_TOP, IDC_INSERT_EMPTY_PAGE}) EXPECT_TRUE(Click(layout, id)) << id;
    ASSERT_TRUE(p.sheet->Apply());

    const DEVMODEW& document = *p.hostPrinter.publicDevMode();
    for (const DEVMODEW& dm : {document, p.PrinterDevMode()}) {
        EXPECT_EQ(dm.dmFields & (DM_ORIENTATION | DM_DUPLEX), DWORD(DM_ORIENTATION | DM_DUPLEX));
        EXPECT_EQ(dm.dmOrientation, DMORIENT_LANDSCAPE);
        EXPECT_EQ(dm.dmDuplex, DMDUP_HORIZONTAL);
    }
    for (const auto& [name, value] : {std::pair<const wchar_t*, DWORD>{L"InterPoint", 1}, {L"BindingEdge", 3},
                                      {L"InsertEmptyPage", 1}, {L"OutputFace", 1}}) {
        EXPECT_EQ(p.Stored(name), value) << testenv::Narrow(name);
    }
    EXPECT_EQ(p.broadcasts.count(), 2) << "orientation and interpoint";

    EXPECT_TRUE(Click(layout, IDC_SINGLE_SIDED));
    EXPECT_TRUE(!Enabled(layout, IDC_INSERT_EMPTY_PAGE) && Checked(layout, IDC_INSERT_EMPTY_PAGE));
    EXPECT_TRUE(!Enabled(layout, IDC_OPEN_TO_TOP) && Checked(layout, IDC_OPEN_TO_TOP));
    p.TakeWrites();
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_EQ(p.TakeWrites(), (std::vector<std::wstring>{L"InterPoint", L"InsertEmptyPage", L"LandscapeMode",
                                                         L"BindingEdge", L"OutputFace", L"Preview"}));
    EXPECT_EQ(p.PrinterDevMode().dmDuplex, DMDUP_SIMPLEX);
    EXPECT_EQ(p.Stored(L"InsertEmptyPage"), 1u);

    const int printerWrites = p.spooler.printerWrites;
    SendDlgItemMessageW(layout, IDC_LANDSCAPE, BM_CLICK, 0, 0);
    EXPECT_TRUE(Click(layout, IDC_SINGLE_SIDED));
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_EQ(p.spooler.printerWrites, printerWrites) << "values already set";
    EXPECT_EQ(p.broadcasts.count(), 3);
    p.TakeWrites();
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_TRUE(p.TakeWrites().empty()) << "nothing changed since the last apply";
}

// Two printers' sheets open at once in one process: a change on the first's Layout page
// leaves the second's nothing to apply and reaches the first printer alone.
TEST(LayoutPage, TwoSheetsOpenAtOnceApplyEachItsOwnChanges) {
    Preferences first, second;
    ASSERT_TRUE(first.Open() && second.Open());
    EXPECT_TRUE(Click(first.sheet->CurrentPage(), IDC_DOUBLE_SIDED));
    testenv::TraceLog trace;
    ASSERT_TRUE(second.sheet->Apply());
    EXPECT_TRUE(trace.Contains("DocumentLayoutPropPageProc(): PSN_APPLY, but no changes")) << trace.Text();
    ASSERT_TRUE(first.sheet->Apply());
    EXPECT_EQ(first.Stored(L"InterPoint"), 1u);
    EXPECT_EQ(second.Stored(L"InterPoint"), 0u);
}

// A user who may not manage the printer is warned, captioned with the printer's name,
// and finds disabled what changes the printer: Layout's controls, Paper/Media's lists,
// the Advanced dialog's buttons even on the printer's own media type and form, and the
// Quorl page's groups and buttons; the Quorl check boxes stay usable.
TEST(DocumentPages, WithoutTheRightToManageThePrinterWarnAndDisableWhatChangesThePrinter) {
    Preferences p;
    p.spooler.refuseFullAccess = true;
    p.Store(L"Config\\MediaTypes", L"Thick Paper", 0x0A03);
    p.Store(L"Config\\Forms", L"Letter", 1);
    std::wstring warning;
    DialogScript answer(p.printer.name(), [&](HWND box) {
        warning = MessageBoxText(box);
        Answer(box, IDOK);
    });
    ASSERT_TRUE(p.Open([](DEVMODEW& dm) { dm.dmFields |= DM_DUPLEX; dm.dmDuplex = DMDUP_VERTICAL; }));  // interpoint
    EXPECT_TRUE(answer.Finish());
    EXPECT_EQ(warning.substr(0, 48), L"Access to some Printer settings may be denied be");
    HWND layout = p.sheet->CurrentPage();
    for (int id : {IDC_SINGLE_SIDED, IDC_DOUBLE_SIDED, IDC_FACE_UP, IDC_COLLATE, IDC_PREVIEW, IDC_ADVANCED}) {
        EXPECT_FALSE(Enabled(layout, id)) << id;
    }
    HWND paper = p.sheet->ShowPluginPage(1);
    std::vector<int> enabled;  // Paper/Media, its Advanced dialog, then Quorl
    const auto note = [&](HWND page, std::initializer_list<int> ids) {
        for (int id : ids) if (Enabled(page, id)) enabled.push_back(id);
    };
    note(paper, {IDC_PAPER_SIZE_LIST, IDC_MEDIA_TYPE_LIST, IDC_PAPER_SOURCE_LIST});
    DialogScript script(L"Advanced - " + p.printer.name(), [&](HWND dialog) {
        ChooseEntry(dialog, IDC_MEDIA_TYPE_LIST, L"Thick Paper");
        ChooseEntry(dialog, IDC_FORMS_LIST, L"Letter");
        note(dialog,
             {IDC_REMOVE_MEDIA_TYPE, IDC_ADD_MEDIA_TYPE, IDC_EDIT_MEDIA_TYPE, IDC_ADD_CUSTOM_FORM, IDC_DELETE_FORM});
        Click(dialog, IDCANCEL);
    });
    EXPECT_TRUE(Click(paper, IDC_ADVANCED) && script.Finish());
    HWND quorl = p.sheet->ShowPluginPage(2);
    note(quorl, {IDC_BRAILLE_QUALITY_LIST, IDC_COLOR, IDC_EMBOSS_STANDARD_TEXT, IDC_MERGE_INK, IDC_ADVANCED,
                 IDC_DEFAULTS, IDC_EMBOSS, IDC_PRINT, IDC_TWO_IN_ONE});
    EXPECT_EQ(enabled, (std::vector<int>{IDC_EMBOSS, IDC_PRINT, IDC_TWO_IN_ONE}));
}

// An unknown stored media type shows "Printer Setting" and becomes 256 on the first
// apply; "Custom 12" and a form reach both device modes and "Config", the hidden paper
// source always as 8; the same form again (50 micrometres off what was kept) writes
// nothing, nor does a second apply.
TEST(PaperPage, MediaTypeFormAndSourceReachTheDeviceModesAndAFormWithinATenthOfAMillimetreIsUnchanged) {
    Preferences p;
    p.Store(L"Config", L"MediaType", 999);
    p.spooler.formSizes[L"A4"] = {210050, 297000};
    ASSERT_TRUE(p.Open([](DEVMODEW& dm) { dm.dmDefaultSource = 2; }));  // the landscape feeder
    HWND paper = p.sheet->ShowPluginPage(1);
    ASSERT_NE(paper, nullptr);
    EXPECT_EQ(Entries(paper, IDC_MEDIA_TYPE_LIST).at(Selection(paper, IDC_MEDIA_TYPE_LIST)), L"Printer Setting");
    EXPECT_EQ(Selection(paper, IDC_PAPER_SOURCE_LIST), 1);
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_EQ(p.Stored(L"MediaType"), 256u);
    EXPECT_EQ(p.Stored(L"PaperSource"), 8u);

    ASSERT_TRUE(ChooseEntry(paper, IDC_MEDIA_TYPE_LIST, L"Custom 12"));
    ASSERT_TRUE(ChooseEntry(paper, IDC_PAPER_SIZE_LIST, L"A4"));
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_EQ(p.Stored(L"MediaType"), 291u);
    const auto size = testenv::ReadPrinterData(p.printer.handle(), L"Config", L"PaperSize").data;
    ASSERT_EQ(size.size(), 8u);
    EXPECT_EQ(reinterpret_cast<const int32_t*>(size.data())[0], 210000) << "rounded down to a tenth of a millimetre";
    EXPECT_EQ(reinterpret_cast<const int32_t*>(size.data())[1], 297000);
    const DEVMODEW& document = *p.hostPrinter.publicDevMode();
    for (const DEVMODEW& dm : {document, p.PrinterDevMode()}) {
        EXPECT_EQ(dm.dmMediaType, 291u);
        EXPECT_EQ(dm.dmDefaultSource, DMBIN_TRACTOR);
        EXPECT_EQ(dm.dmPaperWidth, 2100);
        EXPECT_STREQ(dm.dmFormName, L"A4");
    }

    EXPECT_EQ(p.PrinterDevMode().dmFields & (DM_MEDIATYPE | DM_DEFAULTSOURCE | DM_PAPERSIZE | DM_FORMNAME),
              DWORD(DM_MEDIATYPE | DM_DEFAULTSOURCE | DM_FORMNAME));

    const int printerWrites = p.spooler.printerWrites;
    testenv::TraceLog trace;
    ASSERT_TRUE(ChooseEntry(paper, IDC_PAPER_SIZE_LIST, L"A4"));
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_TRUE(trace.Contains("ApplyPaperSize(): no changes in paper size"));
    EXPECT_EQ(p.spooler.printerWrites, printerWrites);
    p.TakeWrites();
    ASSERT_TRUE(p.sheet->Apply());
    EXPECT_TRUE(p.TakeWrites().empty());
}

// The Advanced dialog: a new media type without a name or with one already kept is
// refused; the built-in media cannot be removed, the printer's own type can;
// a form named like a server form is refused with the message, one of this printer's own
// is added and deleted, a server form cannot be deleted; the test pattern is one raw job
// of exactly the command.
TEST(PaperAdvancedDialog, ManagesTheOwnMediaTypesAndFormsAndSendsTheTestPattern) {
    Preferences p;
    p.Store(L"Config\\MediaTypes", L"Thick Paper", 0x0A03);
    ASSERT_TRUE(p.Open());
    HWND paper = p.sheet->ShowPluginPage(1);
    bool builtInRemovable = true, serverFormDeletable = true, ownFormDeletable = false, nameFocused = true;
    std::wstring question, refusal, nameRefusals;
    DialogScript script(L"Advanced - " + p.printer.name(), [&](HWND dialog) {
        PostClick(dialog, IDC_ADD_MEDIA_TYPE);
        HWND add = WaitForWindow(L"Add ...", 5000);
        Click(add, IDC_TEST_PATTERN);
        for (const wchar_t* name : {L"", L"THICK PAPER"}) {
            Type(add, IDC_MEDIA_NAME, name);
            PostClick(add, IDOK);
            HWND box = WaitForWindow(L"Add ...", 5000, add);
            nameRefusals += MessageBoxText(box) + L"|";
            nameFocused = Answer(box, IDOK) && WaitForFocus(add, IDC_MEDIA_NAME, 5000) && nameFocused;
        }
        Click(add, IDCANCEL);

        ChooseEntry(dialog, IDC_MEDIA_TYPE_LIST, 15);
        builtInRemovable = Enabled(dialog, IDC_REMOVE_MEDIA_TYPE);
        ChooseEntry(dialog, IDC_MEDIA_TYPE_LIST, L"Thick Paper");
        PostClick(dialog, IDC_REMOVE_MEDIA_TYPE);
        HWND box = WaitForWindow(L"Remove Media Type", 5000);
        question = MessageBoxText(box);
        Answer(box, IDYES);

        ChooseEntry(dialog, IDC_FORMS_LIST, L"Letter");
        serverFormDeletable = Enabled(dialog, IDC_DELETE_FORM);
        HWND answered = nullptr;  // the refusal may still be closing
        for (const wchar_t* name : {L"A4", L"Ozdk Wide"}) {
            PostClick(dialog, IDC_ADD_CUSTOM_FORM);
            HWND form = WaitForWindow(L"Add Form ...", 5000, answered);
            Type(form, IDC_FORM_NAME, name);
            Type(form, IDC_FORM_WIDTH, L"30");
            Type(form, IDC_FORM_HEIGHT, L"25.5");
            const size_t listed = Entries(dialog, IDC_FORMS_LIST).size();
            PostClick(form, IDOK);
            // Refused with a message, or added to the list, after which none comes.
            const auto added = [&] { return Entries(dialog, IDC_FORMS_LIST).size() > listed; };
            if (HWND exists = WaitForWindowUnless(L"Add Form ...", added, 5000, form)) {
                refusal = MessageBoxText(exists);
                Answer(answered = exists, IDOK);
            }
        }
        ChooseEntry(dialog, IDC_FORMS_LIST, L"Ozdk Wide");
        ownFormDeletable = Enabled(dialog, IDC_DELETE_FORM);
        PostClick(dialog, IDC_DELETE_FORM);
        Answer(WaitForWindow(L"Delete Form", 5000), IDYES);
        Click(dialog, IDOK);
    });
    ASSERT_TRUE(Click(paper, IDC_ADVANCED));
    EXPECT_TRUE(script.Finish());

    EXPECT_EQ(nameRefusals, L"Please type a name for the media type.|A media type with this name already exists. "
                            L"Please use a different name.|");
    EXPECT_TRUE(nameFocused) << "the dialog stays open on the name";
    EXPECT_FALSE(builtInRemovable) << "entry 15 is built in";
    EXPECT_EQ(question, L"Do you want to remove this media type?");
    ASSERT_EQ(p.spooler.deletions.size(), 2u);
    EXPECT_EQ(p.spooler.deletions[0].key + L"|" + p.spooler.deletions[0].name, L"Config\\MediaTypes|Thick Paper");
    EXPECT_FALSE(serverFormDeletable);
    EXPECT_EQ(refusal.substr(0, 60), L"This form could not be added because the name of this form a");
    EXPECT_EQ(p.spooler.addedForms, std::vector<std::wstring>{L"Ozdk Wide"});
    const testenv::RecordedWrite* recorded = p.spooler.FindWrite(L"Config\\Forms", L"Ozdk Wide");
    ASSERT_NE(recorded, nullptr);
    EXPECT_EQ(recorded->data.size(), 40u);
    EXPECT_EQ(reinterpret_cast<const FORM_INFO_1W*>(recorded->data.data())->Size.cx, 300000);
    EXPECT_TRUE(ownFormDeletable);
    EXPECT_EQ(p.spooler.deletedForms, std::vector<std::wstring>{L"Ozdk Wide"});
    EXPECT_EQ(p.printer.Jobs(), "\x1b%-12345X@PJL SERVICE MEDIAFORCE\r\n");
}
