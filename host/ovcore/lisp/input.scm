;; Commands and input: (command "NAME" args...), the get... functions with initget, alert.
;;
;; A command of the host or a module runs at once, inside the call. Its arguments become the
;; answers to what it asks, in order: they go before anything a script queued, and what the
;; command did not ask for is taken back when it returns, so that it cannot answer a later
;; request by surprise.
;;
;; The primitives this builds on are defined in C++, in src/lispLibInput.cpp.

;;; Commands

;; An argument as the command line would take it typed.
(define (command-answer x)
  (cond ((string? x) x)
        ((lisp-nil? x) "")
        ((exact-integer? x) (number->string x))
        ((real? x) (number->string (exact->inexact x)))
        ((and (list? x) (memv (length x) '(2 3)) (let all ((r x)) (or (null? r) (and (real? (car r)) (all (cdr r))))))
         (string-join (map (lambda (c) (number->string (exact->inexact c))) x) ","))
        (else #f)))

(define (command . args)
  (if (null? args)
      (%cancel-command)
      (let ((name (car args)))
        (unless (and (string? name) (not (string-null? (string-trim-both name))))
          (bad-argument 'command name))
        (let loop ((rest (cdr args)) (texts '()) (picks '()))
          (cond ((pair? rest)
                 (let ((x (car rest)))
                   (cond ((entity-name? x) (loop (cdr rest) texts (cons x picks)))
                         ((command-answer x) => (lambda (t) (loop (cdr rest) (cons t texts) picks)))
                         (else (bad-argument 'command x)))))
                (else
                 (let ((trimmed (string-trim-both name)))
                   (case (%run-command trimmed (reverse texts) (reverse picks))
                     ((0) '())
                     ((1) (lisp-error "command: unknown command ~s" trimmed))
                     ((2) (lisp-error "command: ~a cannot run now" trimmed))
                     ((3) (lisp-error "command: ~a failed" trimmed))
                     (else (lisp-error "command: no commands are registered"))))))))))

;;; Input

;; What initget set, for the next get... call only.
(define %input-bits 0)
(define %input-keywords '())

;; (initget [bits] [keywords]): bit 1 refuses Enter, 2 zero, 4 negative numbers, 128 takes
;; any text as it is. Keywords are separated by blanks; the capitals of each are its
;; shortest form ("LType": LT). Global names may follow an underscore: "Yes No _Y N".
(define* (initget #:optional (bits '()) (keywords '()))
  (when (and (string? bits) (lisp-true? keywords)) (bad-argument 'initget keywords))
  (let* ((keywords (if (string? bits) bits keywords))
         (bits (if (string? bits) 0 (if (lisp-nil? bits) 0 (integer-arg 'initget bits)))))
    (unless (or (lisp-nil? keywords) (string? keywords)) (bad-argument 'initget keywords))
    (set! %input-bits bits)
    (set! %input-keywords
          (if (lisp-nil? keywords)
              '()
              (let* ((words (filter (lambda (w) (not (string-null? w)))
                                    (string-split keywords #\space)))
                     (split (let loop ((ws words) (local '()))
                              (cond ((null? ws) (cons (reverse local) '()))
                                    ((string-prefix? "_" (car ws))
                                     (cons (reverse local) (cons (string-drop (car ws) 1) (cdr ws))))
                                    (else (loop (cdr ws) (cons (car ws) local))))))
                     (locals (car split))
                     (globals (cdr split)))
                (map (lambda (w i) (cons w (if (< i (length globals)) (list-ref globals i) w)))
                     locals (iota (length locals))))))
    '()))

(define (take-input-settings)
  (let ((settings (cons %input-bits %input-keywords)))
    (set! %input-bits 0)
    (set! %input-keywords '())
    settings))

;; The keyword a text stands for: the whole word or a start of it as long as its capitals,
;; or its capitals alone. The result is the global name.
(define (keyword-of text keywords)
  (let ((t (string-upcase (string-trim-both text))))
    (and (not (string-null? t))
         (let loop ((ks keywords))
           (and (pair? ks)
                (let* ((word (caar ks))
                       (upper (string-upcase word))
                       (capitals (list->string (filter char-upper-case? (string->list word))))
                       (lead (let count ((i 0))
                               (if (and (< i (string-length word)) (char-upper-case? (string-ref word i)))
                                   (count (+ i 1)) i))))
                  (if (or (string=? t upper)
                          (and (string-prefix? t upper) (>= (string-length t) (max lead 1)))
                          (and (not (string-null? capitals)) (string=? t capitals)))
                      (cdar ks)
                      (loop (cdr ks)))))))))

(define (input-cancelled) (lisp-error "Function cancelled"))

(define (say text) (%print-text (string-append "\n" text "\n")))

;; Asks until an answer passes: `parse` gives the value of a text or #f with its complaint
;; in `complaint`. Enter gives nil, unless bit 1 asks for a value.
(define (ask prompt parse complaint numeric?)
  (let* ((settings (take-input-settings))
         (bits (car settings))
         (keywords (cdr settings)))
    (let loop ()
      (let ((text (%read-input prompt)))
        (cond ((not text) (input-cancelled))
              ((string-null? (string-trim-both text))
               (if (logtest bits 1) (begin (say "Requires a value.") (loop)) '()))
              ((keyword-of text keywords) => identity)
              (else
               (let ((value (parse (string-trim-both text))))
                 (cond ((not value)
                        (if (logtest bits 128) text (begin (say complaint) (loop))))
                       ((and numeric? (logtest bits 2) (real? value) (zero? value))
                        (say "Value must be nonzero.") (loop))
                       ((and numeric? (logtest bits 4) (real? value) (negative? value))
                        (say "Value must be positive.") (loop))
                       (else value)))))))))

(define (prompt-arg who x) (if (lisp-nil? x) "" (check-string who x)))

;; (getstring [spaces] [prompt]): without `spaces` the text ends at its first blank, as if
;; the space bar had been Enter.
(define* (getstring #:optional (spaces '()) (prompt '()))
  (let* ((prompt (if (string? spaces) spaces prompt))
         (spaces (if (string? spaces) '() spaces))
         (text (%read-input (prompt-arg 'getstring prompt))))
    (take-input-settings)
    (cond ((not text) (input-cancelled))
          ((lisp-true? spaces) text)
          (else (let ((blank (string-index text #\space)))
                  (if blank (substring text 0 blank) text))))))

(define %integer-rx (make-regexp "^[+-]?[0-9]+$"))

(define* (getint #:optional (prompt '()))
  (ask (prompt-arg 'getint prompt)
       (lambda (t)
         (and (regexp-exec %integer-rx t)
              (let ((n (string->number (string-trim t #\+)))) (and (<= -32768 n 32767) n))))
       "Requires an integer between -32768 and 32767." #t))

(define* (getreal #:optional (prompt '()))
  (ask (prompt-arg 'getreal prompt) plain-number "Requires a real number." #t))

(define %point-rx (make-regexp "^(@?)([^,]+),([^,]+)(,([^,]+))?$"))

;; "x,y" or "x,y,z", and "@dx,dy" from the base point.
(define (point-of text base)
  (let ((m (regexp-exec %point-rx (string-delete #\space text))))
    (and m
         (let ((x (plain-number (match:substring m 2)))
               (y (plain-number (match:substring m 3)))
               (z (if (match:substring m 5) (plain-number (match:substring m 5)) 0.0)))
           (and x y z
                (let ((p (list x y z)))
                  (if (string-null? (match:substring m 1))
                      p
                      (map + p (if base (coordinates base) '(0.0 0.0 0.0))))))))))

(define (base-and-prompt who a b)
  (cond ((string? a) (values #f a))
        ((lisp-nil? a) (values #f (prompt-arg who b)))
        (else (values (check-point who a) (prompt-arg who b)))))

(define* (getpoint #:optional (a '()) (b '()))
  (call-with-values (lambda () (base-and-prompt 'getpoint a b))
    (lambda (base prompt)
      (ask prompt (lambda (t) (point-of t base)) "Invalid point." #f))))

(define* (getdist #:optional (a '()) (b '()))
  (call-with-values (lambda () (base-and-prompt 'getdist a b))
    (lambda (base prompt)
      (ask prompt
           (lambda (t)
             (or (let ((d (distof t 4))) (and (real? d) d))
                 (and base (let ((p (point-of t base))) (and p (distance base p))))))
           "Requires numeric distance or two points." #t))))

(define* (getangle #:optional (a '()) (b '()))
  (call-with-values (lambda () (base-and-prompt 'getangle a b))
    (lambda (base prompt)
      (ask prompt
           (lambda (t)
             (or (angle-number t 0)
                 (and base (let ((p (point-of t base))) (and p (lisp-angle base p))))))
           "Requires valid numeric angle or second point." #t))))

(define* (getkword #:optional (prompt '()))
  (when (null? %input-keywords)
    (lisp-error "getkword: initget sets no keywords"))
  (ask (prompt-arg 'getkword prompt) (lambda (t) #f) "Invalid option keyword." #f))

;; (alert text): a message box; nil.
(define (alert text) (%alert (check-string 'alert text)))

(module-replace! (current-module)
  '(orvex-queue-input command initget getstring getint getreal getpoint getdist getangle getkword alert))
