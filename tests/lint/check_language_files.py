#!/usr/bin/env python3
"""Checks the language files and the language list against tests/lint/language_keys.txt.

Usage: check_language_files.py PROJECT_FOLDER

A missing, misspelt or over-long text never fails at run time: the English default or a cut text shows instead. So
this is where it has to be found. Files are read as the platform's profile functions read them.
"""

import re
import sys
from pathlib import Path

ENGLISH = "ENG_KVMR72.res"
SIMPLIFIED = "CHN_KVMR72.res"
TRADITIONAL = "CHF_KVMR72.res"
LANGUAGE_LIST = "LANGUAGE_KVMR72.DAT"
VERSION_SECTION = "FILEVER"
VERSION_KEY = "INIVERSION"
VERSION = "1"

# Hover help of our files stays below half its room: a longer one could not be read while it shows.
HELP_LENGTH = 512
# Buffers of a display name and a file name in the language list.
DISPLAY_NAME_LENGTH = 50
FILE_NAME_LENGTH = 30

# Where the English text is not the default: the default is a placeholder, or it breaks a line, which a profile file
# cannot.
ENGLISH_EXCEPTIONS = {
    ("LAYOUT", "RC_STATIC_LOG"): "Driver LOG",
    ("LAYOUT", "RC_CHECK_LOG"): "Record driver data",
    ("LAYOUT", "RC_BUTTON_LOG"): "Browse...",
    ("LAYOUT", "RC_BUTTON_VIEWER"): "Viewer",
    ("DOCUMENT", "RC_RIGHT"): "Right",
    ("VERSION", "RC_STATIC_VER5"): "Install version: v1.0, UI version: v1.0",
    ("MessageBox", "MB_DOWNLOAD_ERROR3"): (
        "The image is too big to be selected. the width must be less than 1024 Byte,"
        "and the height must be less than 768 Byte!"
    ),
    ("MessageBox", "MB_DOWNLOAD_ERROR4"): (
        "The total counts of the logos is 9, please delete some logos before selecting another logo!"
    ),
}

# Texts that have no Chinese form: names of symbologies, the web address.
ASCII_IN_CHINESE = {
    ("1DCODE", "RC_STATIC_1DCODE_GSDATABAR"),
    ("2DCODE", "RC_STATIC_2DCODE_PDF417"),
    ("2DCODE", "RC_STATIC_2DCODE_GSDATABAR"),
    ("VERSION", "RC_STATIC_VER7"),
}

# Wording that something else relies on: a relabelled density option is found again by its word, the web address is
# opened as it stands, and the height help speaks of a width.
REQUIRED = [
    (ENGLISH, "GPD", "RC_DENSITY", "Density"),
    (ENGLISH, "GPD", "RC_DENSITY_INDEX", "Density"),
    (SIMPLIFIED, "GPD", "RC_DENSITY", "浓度"),
    (SIMPLIFIED, "GPD", "RC_DENSITY_INDEX", "浓度"),
    (TRADITIONAL, "GPD", "RC_DENSITY", "濃度"),
    (TRADITIONAL, "GPD", "RC_DENSITY_INDEX", "濃度"),
    (ENGLISH, "1DCODE", "CTEXT_EDIT_GS1HEIGHT", "The unit of width is dot, available range is 2-250."),
    (ENGLISH, "VERSION", "RC_STATIC_VER7", "http://www.kestrel.example"),
    (SIMPLIFIED, "VERSION", "RC_STATIC_VER7", "http://www.kestrel.example"),
    (TRADITIONAL, "VERSION", "RC_STATIC_VER7", "http://www.kestrel.example"),
]

LANGUAGES = [
    ("English", ENGLISH, "System Language"),
    ("简体中文", SIMPLIFIED, "系统语言(System)"),
    ("繁體中文", TRADITIONAL, "系統語言(System)"),
]

# Simplified form and traditional form, in pairs.
PAIRS = (
    "与與专專业業东東丝絲丢丟两兩严嚴个個丰豐临臨为為举舉义義乐樂习習书書买買乱亂争爭亏虧亚亞产產亩畝亲親亿億仅僅从從仓倉"
    "仪儀们們价價众眾优優会會伞傘伟偉传傳伤傷伦倫伪偽体體侧側侦偵侨僑俭儉债債倾傾储儲儿兒兑兌党黨兰蘭关關兴興养養兽獸内內"
    "册冊写寫军軍农農决決况況冻凍净淨减減几幾凤鳳凭憑凯凱击擊划劃则則刚剛创創删刪别別剂劑剑劍剧劇劝勸办辦务務动動励勵劳勞势勢"
    "区區医醫华華协協单單卖賣卢盧卫衛却卻厂廠厅廳历歷厉厲压壓厌厭县縣参參双雙发發变變叠疊号號叹嘆吓嚇吗嗎启啟听聽员員响響"
    "问問团團园園围圍国國图圖圆圓圣聖场場坏壞块塊坚堅坛壇垄壟垒壘处處备備复複头頭夹夾夺奪奋奮奖獎妇婦妈媽娱娛学學宁寧宝寶"
    "实實审審宪憲宽寬宾賓对對寻尋导導寿壽将將尔爾尘塵尝嘗尽盡层層属屬岁歲岗崗岛島币幣师師带帶帮幫库庫应應庙廟废廢开開异異"
    "张張弹彈强強归歸录錄彻徹径徑态態总總恒恆恶惡恼惱悬懸惊驚惯慣愿願戏戲战戰户戶执執扩擴扫掃扬揚护護报報担擔拟擬拥擁择擇"
    "挂掛挡擋挤擠挥揮损損换換据據抛拋抢搶摆擺摄攝断斷无無旧舊时時显顯晓曉暂暫术術机機杀殺杂雜权權条條来來极極构構标標栏欄"
    "树樹样樣档檔桥橋检檢欢歡欧歐毁毀毕畢气氣汇匯汉漢汤湯沟溝没沒泪淚泽澤洁潔测測济濟浅淺浆漿浏瀏浓濃涂塗润潤涨漲渐漸温溫"
    "湾灣湿濕满滿滚滾滤濾灭滅灯燈灵靈点點炼煉烁爍热熱烧燒爱愛牵牽状狀犹猶独獨狮獅狭狹猎獵环環现現玛瑪电電画畫畅暢疗療监監"
    "盖蓋盘盤码碼砖磚确確础礎离離种種积積称稱稳穩穷窮窃竊竞競笔筆签簽简簡篮籃类類粮糧紧緊纠糾红紅纤纖约約级級纪紀纯純纲綱"
    "纳納纵縱纸紙纹紋纽紐线線练練组組细細终終经經绑綁结結给給络絡绝絕统統继繼绩績绪緒续續维維综綜绿綠缓緩编編缘緣缩縮"
    "网網罗羅罚罰职職联聯聪聰肃肅肤膚肿腫胀脹胁脅胶膠脉脈脑腦脚腳脱脫舰艦艺藝节節苏蘇范範荐薦荣榮药藥获獲营營萨薩蓝藍虑慮"
    "虚虛虽雖蚁蟻补補衬襯装裝裤褲见見观觀规規视視览覽觉覺触觸计計订訂认認讨討让讓训訓议議讯訊记記讲講许許论論设設访訪证證"
    "评評识識诉訴词詞译譯试試诗詩话話该該详詳语語误誤说說请請诸諸读讀课課谁誰调調谈談谢謝负負财財责責败敗货貨质質购購贯貫"
    "贴貼贵貴贷貸费費资資赋賦赏賞赔賠赖賴赛賽赞贊赠贈赢贏车車轨軌转轉轮輪软軟轻輕载載较較辅輔辆輛辑輯输輸达達迁遷过過运運"
    "还還这這进進远遠违違连連迟遲适適选選递遞逻邏遗遺邮郵邻鄰郑鄭酱醬释釋针針钉釘钟鐘钢鋼钥鑰钮鈕钱錢铁鐵铃鈴铺鋪链鏈销銷"
    "锁鎖锅鍋错錯键鍵锐銳镜鏡长長门門闭閉闲閒间間闻聞阅閱队隊阳陽阴陰阶階际際陆陸陈陳险險随隨隐隱难難雾霧静靜顶頂项項顺順"
    "须須顾顧顿頓预預领領频頻题題颜顏额額风風飞飛饭飯饮飲饰飾饱飽馆館马馬驱驅驶駛验驗骗騙鱼魚鲜鮮鸟鳥鸣鳴麦麥黄黃齐齊齿齒龙龍"
    "后後只隻里裡面麵占佔冲衝准準制製台臺"
)
# Characters that both scripts use, in the pairs above for one of their meanings only.
SHARED = set("后只里面占冲准制台")


class Report:
    def __init__(self) -> None:
        self.passed = 0
        self.failed = 0

    def check(self, good: bool, where: str, fault: str) -> bool:
        if good:
            self.passed += 1
        else:
            self.failed += 1
            print(f"FAILED {where}: {fault}")
        return good


def units(text: str) -> int:
    return len(text.encode("utf-16-le")) // 2


def unquoted(text: str) -> str:
    """A value as a profile function returns it: one pair of equal quotes falls away."""
    if len(text) >= 2 and text[0] == text[-1] and text[0] in "\"'":
        return text[1:-1]
    return text


def read_table(path: Path, report: Report) -> dict:
    """The rows as {(section, key): (buffer length or None, default or None)}, in their order."""
    table = {}
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if line.startswith("#"):
            continue
        fields = line.split("\t")
        where = f"{path.name} line {number}"
        if not report.check(len(fields) == 4, where, "is not section, key, length and default"):
            continue
        section, key, length, default = fields
        report.check((section, key) not in table, where, f"[{section}] {key} is there twice")
        table[section, key] = (
            None if length == "-" else int(length),
            None if default == "-" else unquoted(default).replace("\\n", "\n"),
        )
    return table


def read_profile(path: Path, report: Report) -> dict:
    """The file's values as {(section, key): text}; reports faults of encoding and form."""
    name = path.name
    if not report.check(path.is_file(), name, "is missing"):
        return {}
    data = path.read_bytes()
    report.check(data[:2] == b"\xff\xfe", name, "has no UTF-16LE byte-order mark")
    try:
        text = data[2:].decode("utf-16-le")
    except UnicodeDecodeError as fault:
        report.check(False, name, f"is not UTF-16LE: {fault}")
        return {}
    report.check(text.endswith("\r\n"), name, "does not end with CR LF")
    report.check(not re.search(r"\r(?!\n)|(?<!\r)\n", text), name, "has a line end that is not CR LF")
    report.check("\ufeff" not in text, name, "has a second byte-order mark")

    values = {}
    seen_sections = set()
    seen_keys = set()
    section = ""
    for number, line in enumerate(text.split("\r\n"), 1):
        where = f"{name} line {number}"
        if not line or line.startswith(";"):
            continue
        if line.startswith("["):
            section = line[1:-1]
            report.check(bool(re.fullmatch(r"\[\w+\]", line)), where, f"'{line}' is not a section")
            report.check(section.lower() not in seen_sections, where, f"[{section}] is there twice")
            seen_sections.add(section.lower())
            continue
        key, equals, raw = line.partition("=")
        where = f"{name} [{section}] {key}"
        if not report.check(bool(section and equals), where, "is not a key with a value in a section"):
            continue
        report.check(raw == raw.strip(), where, "has outer blanks, which are lost without quotes")
        report.check(all(character.isprintable() for character in raw), where, "has a control character")
        report.check("\\" not in raw, where, "has a backslash: profile files know no escapes")
        # Profile functions compare without case and take the first of two equal keys.
        folded = (section.lower(), key.lower())
        if report.check(folded not in seen_keys, where, "is there twice"):
            values[section, key] = unquoted(raw)
        seen_keys.add(folded)
    return values


def check_texts(name: str, values: dict, table: dict, report: Report) -> None:
    for section, key in values:
        report.check((section, key) in table, f"{name} [{section}] {key}", "is read by no page")
    for (section, key), (length, _) in table.items():
        where = f"{name} [{section}] {key}"
        if not report.check((section, key) in values, where, "is missing"):
            continue
        text = values[section, key]
        report.check(bool(text.strip()), where, "is empty")
        if length is not None:
            room = min(length, HELP_LENGTH) if key.startswith("CTEXT_") else length
            report.check(units(text) < room, where, f"has {units(text)} units, {room - 1} fit")
    version = values.get((VERSION_SECTION, VERSION_KEY))
    report.check(version == VERSION, f"{name} [{VERSION_SECTION}] {VERSION_KEY}", f"is {version}, not {VERSION}")


def check_english(values: dict, table: dict, report: Report) -> None:
    for place in ENGLISH_EXCEPTIONS:
        report.check(place in table, f"exception [{place[0]}] {place[1]}", "is no key")
    for place, (_, default) in table.items():
        if place not in values:
            continue
        where = f"{ENGLISH} [{place[0]}] {place[1]}"
        text = values[place]
        report.check(text.isascii(), where, "is not plain ASCII")
        wanted = ENGLISH_EXCEPTIONS.get(place, default)
        if wanted is not None:
            report.check(text == wanted, where, f"reads '{text}', not '{wanted}'")


def check_chinese(name: str, values: dict, english: dict, codec: str, foreign: set, report: Report) -> None:
    for place, text in values.items():
        if place[0] == VERSION_SECTION:
            continue
        where = f"{name} [{place[0]}] {place[1]}"
        if place in ASCII_IN_CHINESE:
            report.check(text == english.get(place), where, "differs from English, and has no Chinese form")
        else:
            report.check(not text.isascii(), where, f"is not translated: '{text}'")
        wrong = "".join(sorted(set(text) & foreign))
        report.check(not wrong, where, f"has characters of the other script: {wrong}")
        # The national sets hold one script each, more or less: a second look that needs no list.
        outside = "".join(sorted({c for c in text if not encodable(c, codec)}))
        report.check(not outside, where, f"has characters outside {codec}: {outside}")

        original = english.get(place, "")
        numbers = set(re.findall(r"\d+(?![\dD])", original))
        lost = numbers - set(re.findall(r"\d+", text))
        report.check(not lost, where, f"lacks the number {', '.join(sorted(lost))}")
        if place[1].startswith("RC_"):
            colons = (original.endswith(":"), text.endswith("："))
            report.check(colons[0] == colons[1], where, "differs from English in its closing colon")


def encodable(character: str, codec: str) -> bool:
    try:
        character.encode(codec)
    except UnicodeEncodeError:
        return False
    return True


def check_language_list(folder: Path, report: Report) -> None:
    values = read_profile(folder / LANGUAGE_LIST, report)
    wanted = {
        ("LANGUAGE", "CUR_INI"): ENGLISH,
        ("LANGUAGE", "COUNT"): str(len(LANGUAGES)),
        (VERSION_SECTION, VERSION_KEY): VERSION,
    }
    for index, (display_name, file_name, system_label) in enumerate(LANGUAGES):
        wanted["LANGUAGE", f"Language{index}"] = display_name
        wanted["LANGUAGE", f"INI{index}"] = file_name
        wanted["LANGUAGE", f"SYSLANG{index}"] = system_label
    for (section, key), text in wanted.items():
        where = f"{LANGUAGE_LIST} [{section}] {key}"
        actual = values.get((section, key))
        if report.check(actual is not None, where, "is missing"):
            report.check(actual == text, where, f"reads '{actual}', not '{text}'")
            room = FILE_NAME_LENGTH if "INI" in key else DISPLAY_NAME_LENGTH
            report.check(units(actual) < room, where, f"has {units(actual)} units, {room - 1} fit")
    for section, key in values:
        report.check((section, key) in wanted, f"{LANGUAGE_LIST} [{section}] {key}", "is not known")


def main() -> int:
    if len(sys.argv) != 2:
        print(__doc__)
        return 2
    project = Path(sys.argv[1])
    folder = project / "language"
    report = Report()

    table = read_table(project / "tests" / "lint" / "language_keys.txt", report)
    report.check(len(table) > 0, "language_keys.txt", "holds no keys")
    files = {name: read_profile(folder / name, report) for _, name, _ in LANGUAGES}
    for name, values in files.items():
        check_texts(name, values, table, report)

    simplified_only = set(PAIRS[0::2]) - SHARED
    traditional_only = set(PAIRS[1::2]) - SHARED
    english = files[ENGLISH]
    check_english(english, table, report)
    check_chinese(SIMPLIFIED, files[SIMPLIFIED], english, "gb2312", traditional_only, report)
    check_chinese(TRADITIONAL, files[TRADITIONAL], english, "big5", simplified_only, report)
    for name, section, key, part in REQUIRED:
        text = files[name].get((section, key), "")
        report.check(part in text, f"{name} [{section}] {key}", f"does not say '{part}'")

    check_language_list(folder, report)
    known = {name for _, name, _ in LANGUAGES} | {LANGUAGE_LIST}
    for path in sorted(folder.iterdir()):
        report.check(path.name in known, f"language/{path.name}", "is not in the language list")

    print(f"{report.passed} passed, {report.failed} failed")
    return 1 if report.failed else 0


if __name__ == "__main__":
    sys.exit(main())
