;; Files and settings: findfile, open and its kin, getcfg and setcfg on the settings store,
;; and ver.
;;
;; The settings store is the per-user configuration file under the host's product root
;; ("Orvex/R26" gives ~/.config/Orvex/R26.ini). Scripts keep their values under "AppData/";
;; the host's own "Support/Folders" lists the folders findfile looks in after the current
;; folder and the drawing's.
;;
;; The primitives this builds on are defined in C++, in src/lispLibFiles.cpp.

(use-modules (ice-9 rdelim))

(define (findfile name) (%findfile (check-string 'findfile name)))

(define* (vl-directory-files #:optional (folder '()) (pattern '()) (what '()))
  (unless (or (lisp-nil? folder) (string? folder)) (bad-argument 'vl-directory-files folder))
  (unless (or (lisp-nil? pattern) (string? pattern)) (bad-argument 'vl-directory-files pattern))
  (unless (or (lisp-nil? what) (memv what '(-1 0 1))) (bad-argument 'vl-directory-files what))
  (%directory-files (if (string? folder) folder #f) (if (string? pattern) pattern #f)
                    (if (exact-integer? what) what 0)))

(define (check-cfg-name who name)
  (check-string who name)
  (unless (string-prefix-ci? "AppData/" name) (bad-argument who name))
  name)

;; (getcfg "AppData/app/key"): the stored text, nil when none is stored.
(define (getcfg name) (%getcfg (check-cfg-name 'getcfg name)))
;; (setcfg "AppData/app/key" text): stores the text and returns it.
(define (setcfg name value) (%setcfg (check-cfg-name 'setcfg name) (check-string 'setcfg value)))

;;; Files

(define-record-type <lisp-file>
  (%make-lisp-file port mode path)
  lisp-file?
  (port lisp-file-port set-lisp-file-port!)
  (mode lisp-file-mode)
  (path lisp-file-path))

(set-record-type-printer! <lisp-file>
  (lambda (f port) (simple-format port "#<file ~s>" (lisp-file-path f))))

;; (open path mode): mode "r" reads, "w" writes a new file, "a" appends; UTF-8. nil when
;; the file cannot be opened.
(define* (lisp-open path mode #:optional encoding)
  (check-string 'open path)
  (check-string 'open mode)
  (unless (member mode '("r" "w" "a")) (bad-argument 'open mode))
  (when (string-index path #\nul) (bad-argument 'open path))
  (catch #t
    (lambda ()
      (let ((port (with-fluids ((%default-port-encoding "UTF-8")) (open-file path mode))))
        (set-port-encoding! port "UTF-8")
        (%make-lisp-file port mode path)))
    (lambda ignored '())))

(define (lisp-close file)
  (unless (lisp-file? file) (bad-argument 'close file))
  (when (lisp-file-port file)
    (close-port (lisp-file-port file))
    (set-lisp-file-port! file #f))
  '())

(define (open-port-of who file reading?)
  (unless (lisp-file? file) (bad-argument who file))
  (unless (lisp-file-port file) (lisp-error "~a: the file ~a is closed" who (lisp-file-path file)))
  (unless (eq? reading? (string=? (lisp-file-mode file) "r"))
    (lisp-error "~a: the file ~a is not open for ~a" who (lisp-file-path file)
                (if reading? "reading" "writing")))
  (lisp-file-port file))

(define (reading-port who file) (open-port-of who file #t))
(define (writing-port who file) (open-port-of who file #f))

;; Typed input read a character at a time: the rest of the last line typed.
(define %keyboard "")

(define (keyboard-line)
  (if (string-null? %keyboard)
      (let ((text (%read-input "")))
        (unless text (input-cancelled))
        text)
      (let ((line (string-trim-right %keyboard #\newline)))
        (set! %keyboard "")
        line)))

;; A line without its end; a line that ends in CR LF loses the CR too.
(define* (lisp-read-line #:optional (file '()))
  (if (lisp-nil? file)
      (keyboard-line)
      (let ((line (read-line (reading-port 'read-line file))))
        (cond ((eof-object? line) '())
              ((string-suffix? "\r" line) (string-drop-right line 1))
              (else line)))))

(define* (lisp-read-char #:optional (file '()))
  (if (lisp-nil? file)
      (begin
        (when (string-null? %keyboard)
          (let ((text (%read-input "")))
            (unless text (input-cancelled))
            (set! %keyboard (string-append text "\n"))))
        (let ((c (string-ref %keyboard 0)))
          (set! %keyboard (substring %keyboard 1))
          (char->integer c)))
      (let ((c (read-char (reading-port 'read-char file))))
        (if (eof-object? c) '() (char->integer c)))))

(define* (write-line text #:optional (file '()))
  (check-string 'write-line text)
  (if (lisp-nil? file)
      (%print-text (string-append text "\n"))
      (let ((port (writing-port 'write-line file)))
        (display text port)
        (newline port)))
  text)

(define* (lisp-write-char code #:optional (file '()))
  (let ((n (integer-arg 'write-char code)))
    (unless (and (< 0 n #x110000) (not (<= #xD800 n #xDFFF))) (bad-argument 'write-char code))
    (if (lisp-nil? file)
        (%print-text (string (integer->char n)))
        (write-char (integer->char n) (writing-port 'write-char file)))
    n))

(let ((base-type type))
  (set! type (lambda (x) (if (lisp-file? x) 'FILE (base-type x)))))

(module-replace! (current-module)
  '(findfile vl-directory-files getcfg setcfg ver (lisp-open . open) (lisp-close . close)
    (lisp-read-line . read-line) (lisp-read-char . read-char) write-line
    (lisp-write-char . write-char)))
