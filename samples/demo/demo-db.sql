-- The demo project's database. The build turns this script into demo.db beside the
-- project file (build/samples/demo/). docs/project.md describes the tables.
--
-- Drawing 1 is drawings/demo.dwg, drawing 2 drawings/import.dwg. User values are numbered
-- as the project's setting 33 names them: 1 Insulation, 2 "Voltage, max", 3 Temperature.

PRAGMA foreign_keys = ON;
BEGIN;

-- The drawings of the project, with the file time of each as last taken into this database.
CREATE TABLE FILETIME (
    DWGIX    INTEGER NOT NULL PRIMARY KEY,
    DWGNAME  TEXT    NOT NULL UNIQUE,
    DWGTIME  TEXT
);

-- Attributes of each drawing's WD_M block.
CREATE TABLE WD_M (
    DWGIX     INTEGER NOT NULL REFERENCES FILETIME (DWGIX),
    ATTR_NAME TEXT    NOT NULL COLLATE NOCASE,
    ATTR_VAL  TEXT,
    PRIMARY KEY (DWGIX, ATTR_NAME)
);

-- One row per wire type of a drawing. Layer names compare without regard to case, as
-- they do in a drawing.
CREATE TABLE WIRETYPE (
    DWGIX      INTEGER NOT NULL REFERENCES FILETIME (DWGIX),
    LAYNAME    TEXT    NOT NULL COLLATE NOCASE,
    WIRECOLOR  TEXT,
    WIRESIZE   TEXT,
    FLAG       INTEGER NOT NULL DEFAULT 1 CHECK (FLAG IN (0, 1)),
    USERCOUNT  INTEGER NOT NULL DEFAULT 0 CHECK (USERCOUNT BETWEEN 0 AND 20),
    WIREKIND   TEXT    NOT NULL DEFAULT 'WIRE',
    LAYCOLOR   INTEGER CHECK (LAYCOLOR BETWEEN 0 AND 256),
    LINETYPE   TEXT,
    LINEWEIGHT INTEGER,
    GRIDROW    INTEGER NOT NULL DEFAULT 0,
    PRIMARY KEY (DWGIX, LAYNAME)
);

-- The user values of a wire type, one row each, numbered 1 to 20.
CREATE TABLE WIRETYPE_USR (
    DWGIX    INTEGER NOT NULL,
    LAYNAME  TEXT    NOT NULL COLLATE NOCASE,
    [USER]   INTEGER NOT NULL CHECK ([USER] BETWEEN 1 AND 20),
    [VALUE]  TEXT,
    PRIMARY KEY (DWGIX, LAYNAME, [USER]),
    FOREIGN KEY (DWGIX, LAYNAME) REFERENCES WIRETYPE (DWGIX, LAYNAME)
);

INSERT INTO FILETIME (DWGIX, DWGNAME, DWGTIME) VALUES
    (1, 'drawings/demo.dwg',   '2024-05-06T09:30:00'),
    (2, 'drawings/import.dwg', '2024-05-06T09:45:00');

INSERT INTO WD_M (DWGIX, ATTR_NAME, ATTR_VAL) VALUES
    (1, 'WIRELAYS', 'BK*,BU*,GNYE*,RD*'),
    (1, 'SHEET',    '1'),
    (1, 'UNIT_SCL', '1.0'),
    (2, 'WIRELAYS', 'BK*,BN*,GY*,OG*,WH*'),
    (2, 'SHEET',    '2'),
    (2, 'UNIT_SCL', '1.0');

INSERT INTO WIRETYPE
    (DWGIX, LAYNAME, WIRECOLOR, WIRESIZE, FLAG, USERCOUNT, LAYCOLOR, LINETYPE, LINEWEIGHT, GRIDROW)
VALUES
    (1, 'BK_1.5',   'BK',   '1.5',  1, 3, 250, 'CONTINUOUS', 25, 1),
    (1, 'BU_0.75',  'BU',   '0.75', 1, 3,   5, 'CONTINUOUS', 18, 2),
    (1, 'GNYE_2.5', 'GNYE', '2.5',  1, 2,  62, 'CONTINUOUS', 35, 3),
    (1, 'RD_1.5',   'RD',   '1.5',  0, 4,   1, 'DASHED',     25, 4),
    (2, 'BK_1.5',   'BK',   '1.5',  1, 3, 250, 'CONTINUOUS', 25, 1),
    (2, 'BN_1',     'BN',   '1',    1, 3,  34, 'CONTINUOUS', 25, 2),
    (2, 'GY_0.5',   'GY',   '0.5',  0, 3,   8, 'CONTINUOUS', 13, 3),
    (2, 'OG_2.5',   'OG',   '2.5',  1, 3,  30, 'CONTINUOUS', 35, 4),
    (2, 'WH_0.75',  'WH',   '0.75', 1, 1,   7, 'CONTINUOUS', 18, 5);

INSERT INTO WIRETYPE_USR (DWGIX, LAYNAME, [USER], [VALUE]) VALUES
    (1, 'BK_1.5',   1,  'PVC'),
    (1, 'BK_1.5',   2,  '300/500 V'),
    (1, 'BK_1.5',   3,  '70 °C'),
    (1, 'BU_0.75',  1,  'PVC'),
    (1, 'BU_0.75',  2,  '300/500 V'),
    (1, 'BU_0.75',  3,  '70 °C'),
    (1, 'GNYE_2.5', 1,  'PVC'),
    (1, 'GNYE_2.5', 2,  '450/750 V'),
    (1, 'GNYE_2.5', 3,  NULL),
    (1, 'RD_1.5',   1,  'Silicone'),
    (1, 'RD_1.5',   2,  '300/500 V'),
    (1, 'RD_1.5',   3,  '180 °C'),
    (1, 'RD_1.5',   20, 'Heat-resistant'),
    (2, 'BK_1.5',   1,  'Rubber'),
    (2, 'BK_1.5',   2,  '450/750 V'),
    (2, 'BK_1.5',   3,  '60 °C'),
    (2, 'BN_1',     1,  'XLPE'),
    (2, 'BN_1',     2,  '0.6/1 kV'),
    (2, 'BN_1',     3,  '90 °C'),
    (2, 'GY_0.5',   1,  'PVC'),
    (2, 'GY_0.5',   2,  '300/300 V'),
    (2, 'GY_0.5',   3,  '70 °C'),
    (2, 'OG_2.5',   1,  'PVC'),
    (2, 'OG_2.5',   2,  '450/750 V'),
    (2, 'OG_2.5',   3,  '70 °C'),
    (2, 'WH_0.75',  1,  'PTFE');

COMMIT;
